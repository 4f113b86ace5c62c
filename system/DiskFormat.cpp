#include <system/DiskDevice.h>
#include <system/RegistryKey.h>
#include <tessel/system/disk.h>

#include <shlobj.h>

namespace {

/// Reads a text of any length, truncated to fit.
template <unsigned long room> void ReadText(HKEY key, const wchar_t* name, wchar_t (&text)[room]) {
    CReg registry;
    unsigned long bytes = 0; // requested so that a value of any length is read
    if (registry.ReadKey(key, name, 0, &bytes) == ERROR_SUCCESS) (void)registry.GetData(text, room, 0);
}

bool PartitionMedium(tessel::DiskDevice& disk) {
    DWORD bytes = 0;
    DISK_GEOMETRY geometry{};
    return disk.HasMedium() && disk.ReadLayout(bytes) && disk.ReadGeometry(geometry) &&
           disk.WriteOnePartition(geometry);
}

} // namespace

FormatDisk::FormatDisk(HWND owner) : m_hOwner(owner), m_szDrive{}, m_szDevice{} {
    (void)GetMoDriveLetter(); // cannot fail
}

int FormatDisk::GetMoDriveLetter() {
    CReg registry;
    const tessel::RegistryKey key(registry, CReg::OpenVardaKey(L"FileDefs", true, L"RunTime"));
    ReadText(key.Get(), L"PathToMo", m_szDrive);
    ReadText(key.Get(), L"MOPHYSICALDRIVE", m_szDevice);
    return 1;
}

int FormatDisk::DriveLetterToNumber() {
    const wchar_t letter = m_szDrive[0];
    if (letter >= L'A' && letter <= L'Z') return letter - L'A';
    return letter >= L'a' && letter < L'z' ? letter - L'a' : -1; // ODD-195: z is no drive, but Z is
}

int FormatDisk::Partition() {
    tessel::DiskDevice disk;
    if (m_szDevice[0] == L'\0' || !disk.HasBlock()) return 0;
    if (!disk.Open(m_szDevice, GENERIC_READ, 0)) return 0; // ODD-196: read access, although the disk is written to
    (void)disk.PreventRemoval(true);                       // not every drive can lock
    const bool written = PartitionMedium(disk);
    (void)disk.PreventRemoval(false);
    return written ? 1 : 0;
}

unsigned int FormatDisk::ShowFormatDialog() {
    return SHFormatDrive(m_hOwner, static_cast<UINT>(DriveLetterToNumber()), SHFMT_ID_DEFAULT, SHFMT_OPT_FULL);
}

int FormatDisk::PartitionAndFormatMo() {
    return Partition() != 0 ? static_cast<int>(ShowFormatDialog()) : 1;
}
