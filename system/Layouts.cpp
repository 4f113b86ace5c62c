#include <foundation/Layout.h>
#include <tessel/system/command.h>
#include <tessel/system/datetime.h>
#include <tessel/system/disk.h>
#include <tessel/system/eventlog.h>
#include <tessel/system/file.h>
#include <tessel/system/processor.h>
#include <tessel/system/registry.h>
#include <tessel/system/version.h>

#include <winioctl.h>

using tessel::kOn32Bits;

struct CCommandLayout {
    static_assert(sizeof(CCommand::COMMAND) == 1052);
    static_assert(offsetof(CCommand::COMMAND, Type) == 12);
    static_assert(offsetof(CCommand::COMMAND, PathFileName) == 16);
    static_assert(offsetof(CCommand::COMMAND, WorkDir) == 276);
    static_assert(offsetof(CCommand::COMMAND, Arguments) == 536);
    static_assert(offsetof(CCommand::COMMAND, RestartKey) == 792);
    static_assert(offsetof(CCommand, m_iCmdId) == sizeof(void*));
    static_assert(offsetof(CCommand, m_Type) == sizeof(void*) + 12);
    static_assert(offsetof(CCommand, m_szPathFileName) == sizeof(void*) + 16);
    static_assert(offsetof(CCommand, m_szSubstituted) == sizeof(void*) + 792);
    static_assert(offsetof(CCommand, m_szRestartKey) == sizeof(void*) + 1048);
    static_assert(offsetof(CCommand, m_Command) == sizeof(void*) + 1308);
};

struct CDateTimeEnglishLayout {
    static_assert(offsetof(CDateTimeEnglish, m_SystemTime) == sizeof(void*));
    static_assert(offsetof(CDateTimeEnglish, m_Status) == sizeof(void*) + 16);
    static_assert(offsetof(CDateTimeEnglish, m_szText) == sizeof(void*) + 20);
};

struct FormatDiskLayout {
    static_assert(offsetof(FormatDisk, m_hOwner) == sizeof(void*));
    static_assert(offsetof(FormatDisk, m_szDrive) == 2 * sizeof(void*));
    static_assert(offsetof(FormatDisk, m_szDevice) == 2 * sizeof(void*) + 16);
};

static_assert(sizeof(CPrepMo) == sizeof(void*));

// The device takes and returns these records as bytes.
static_assert(sizeof(DISK_GEOMETRY) == 24);
static_assert(sizeof(PARTITION_INFORMATION) == 32);
static_assert(offsetof(PARTITION_INFORMATION, HiddenSectors) == 16);
static_assert(offsetof(PARTITION_INFORMATION, PartitionType) == 24);
static_assert(offsetof(PARTITION_INFORMATION, RewritePartition) == 27);

struct CNtEventLogLayout {
    static_assert(offsetof(CNtEventLog, m_szLog) == sizeof(void*));
    static_assert(sizeof(CNtEventLog) == sizeof(void*) + 40);
};

struct CNtEventLogSourceLayout {
    static_assert(offsetof(CNtEventLogSource, m_szName) == sizeof(void*));
    static_assert(offsetof(CNtEventLogSource, m_hSource) == 2 * sizeof(void*));
    static_assert(offsetof(CNtEventLogSource, m_usCategory) == 3 * sizeof(void*));
};

struct CFileLayout {
    static_assert(offsetof(CFile, m_iFile) == sizeof(void*));
    static_assert(offsetof(CFile, m_ulStatus) == sizeof(void*) + 4);
    static_assert(offsetof(CFile, m_ulSize) == sizeof(void*) + 8);
    static_assert(offsetof(CFile, m_szPath) == sizeof(void*) + 12);
};

struct CFileFinderLayout {
    static_assert(offsetof(CFileFinder, m_pFindData) == sizeof(void*));
    static_assert(offsetof(CFileFinder, m_hFind) == 2 * sizeof(void*));
};

struct CMemMappedFileLayout {
    static_assert(offsetof(CMemMappedFile, m_hMapping) == sizeof(void*));
    static_assert(offsetof(CMemMappedFile, m_pView) == 2 * sizeof(void*));
    static_assert(offsetof(CMemMappedFile, m_ulLastError) == 3 * sizeof(void*));
};

struct CProcessorLayout {
    static_assert(offsetof(CProcessor, m_ulRegistered) == sizeof(void*));
    static_assert(offsetof(CProcessor, m_ulCurrent) == sizeof(void*) + 4);
    static_assert(offsetof(CProcessor, m_ulMaximum) == sizeof(void*) + 8);
};

struct CWin32_ProcessorLayout {
    static constexpr std::size_t kStart = sizeof(void*);
    static_assert(offsetof(CWin32_Processor, Result) == kStart);
    static_assert(offsetof(CWin32_Processor, CurrentClockSpeed) == kStart + 4);
    static_assert(offsetof(CWin32_Processor, MaxClockSpeed) == kStart + 8);
    static_assert(offsetof(CWin32_Processor, Caption) == kStart + 12);
    static_assert(offsetof(CWin32_Processor, Manufacturer) == kStart + 140);
    static_assert(offsetof(CWin32_Processor, Description) == kStart + 204);
    static_assert(offsetof(CWin32_Processor, Name) == kStart + 332);
};

struct CWmiClassLayout {
    static_assert(offsetof(CWmiClass, m_lResult) == sizeof(void*));
    static_assert(offsetof(CWmiClass, m_pLocator) == 2 * sizeof(void*));
    static_assert(offsetof(CWmiClass, m_pServices) == 3 * sizeof(void*));
    static_assert(offsetof(CWmiClass, m_pEnum) == 4 * sizeof(void*));
    static_assert(offsetof(CWmiClass, m_pInstance) == 5 * sizeof(void*));
};

struct CRegLayout {
    static_assert(offsetof(CReg, m_Type) == sizeof(void*));
    static_assert(offsetof(CReg, m_pName) == 2 * sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CReg, m_ulNameLen) == 16);
    static_assert(!kOn32Bits || offsetof(CReg, m_ulStatus) == 24);
    static_assert(!kOn32Bits || offsetof(CReg, m_hKeyEnum) == 36);
    static_assert(!kOn32Bits || offsetof(CReg, m_ulFindDataLen) == 48);
    static_assert(!kOn32Bits || sizeof(CReg) == 52);
};

struct CSwVersionLayout {
    static_assert(offsetof(CSwVersion, m_File) == 8);
    static_assert(offsetof(CSwVersion, m_pVersionInfo) == 248);
};

static_assert(sizeof(CSwFile) == 240);
static_assert(offsetof(CSwFile, size) == 16);
static_assert(offsetof(CSwFile, time) == 24);
static_assert(offsetof(CSwFile, path) == 40);
