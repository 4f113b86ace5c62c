#include <foundation/Handle.h>
#include <foundation/Report.h>
#include <media/AudioMode.h>

#include <algorithm>

using tessel::Handle;
using tessel::ReportSite;
using tessel::ReportUnless;
using tessel::Transfer;

namespace {

constexpr ReportSite kNotTruncated{"CAudio", 412};
constexpr ReportSite kLongerThanLongest{"CAudio", 478};
constexpr ReportSite kReadBeyondData{"CAudio", 531};

bool SeekTo(HANDLE file, unsigned long offset) {
    LARGE_INTEGER wanted{};
    LARGE_INTEGER reached{};
    wanted.QuadPart = offset;
    return SetFilePointerEx(file, wanted, &reached, FILE_BEGIN) && reached.QuadPart == wanted.QuadPart;
}

} // namespace

unsigned long CAudio::ResultOfFile(bool succeeded) {
    if (!succeeded) SetFileError(GetLastError());
    return succeeded ? 0 : 1;
}

HANDLE CAudio::OpenPath(unsigned long access, unsigned long disposition) {
    m_szPath[MAX_PATH - 1] = L'\0'; // GUARD-102: the owner may have filled the whole buffer
    return CreateFileW(m_szPath, access, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

unsigned long CAudio::AttachToFile() {
    m_ulDataWrite = 0;
    m_ulDataRead = 0;
    const unsigned long failed = OpenFile() || SizeFile();
    return CloseFile() | failed;
}

unsigned long CAudio::DetachFromFile() {
    m_ulDataWrite = 0;
    m_ulDataRead = 0;
    return 0;
}

unsigned long CAudio::OpenFile() {
    const DWORD access = Mode().fileAccess;
    Handle file(access != 0 ? OpenPath(access, OPEN_ALWAYS) : nullptr);
    const unsigned long failed = ResultOfFile(static_cast<bool>(file));
    (void)CloseFile(); // only now: reopening the same file fails, as it is not shared
    m_hFile = file ? file.Release() : nullptr;
    return failed;
}

unsigned long CAudio::CloseFile() {
    const HANDLE file = m_hFile;
    m_hFile = nullptr;
    return ResultOfFile(file == nullptr || CloseHandle(file));
}

unsigned long CAudio::SizeFile() {
    const unsigned long size = m_hFile != nullptr ? GetFileSize(m_hFile, nullptr) : INVALID_FILE_SIZE;
    if (size == INVALID_FILE_SIZE) return ResultOfFile(false);
    m_ulDataWrite = size;
    return 0;
}

unsigned long CAudio::SeekFile() {
    const auto offset = Mode().fileOffset;
    return m_hFile != nullptr && offset != nullptr ? ResultOfFile(SeekTo(m_hFile, this->*offset)) : 1;
}

unsigned long CAudio::TruncateFile() {
    if (Mode().transfer != Transfer::ToFile) return 0;
    if (m_ulDataRead < m_ulDataWrite) {
        const Handle file(OpenPath(GENERIC_WRITE, OPEN_EXISTING));
        const bool truncated = file && SeekTo(file.Get(), m_ulDataRead) && SetEndOfFile(file.Get());
        (void)ResultOfFile(truncated);
        if (truncated) m_ulDataWrite = m_ulDataRead; // ODD-111: the file does not count as modified
    }
    ReportUnless(m_ulDataRead == m_ulDataWrite, "m_ulDataRead == m_ulDataWrite", kNotTruncated);
    return m_ulDataRead == m_ulDataWrite ? 0 : 1;
}

unsigned long CAudio::ClearFile() {
    const Handle file(OpenPath(GENERIC_WRITE, TRUNCATE_EXISTING));
    if (ResultOfFile(static_cast<bool>(file)) != 0) return 1;
    if (m_ulDataWrite != 0) m_bMod = 1;
    m_ulDataWrite = 0;
    m_ulDataRead = 0;
    return 0;
}

unsigned long CAudio::WriteBuffers() {
    if (Mode().transfer != Transfer::ToFile) return 1;
    return WriteBuffer(&m_StreamHeader[0]) || WriteBuffer(&m_StreamHeader[1]);
}

unsigned long CAudio::WriteBuffer(ACMSTREAMHEADER* header) {
    if (Mode().transfer != Transfer::ToFile || m_ulDataWrite == m_ulMaxCompress) return 0;
    if (header == nullptr) return 1; // GUARD-09
    // GUARD-103: the bytes in use may exceed the buffer.
    const auto used = static_cast<unsigned long>(std::min<DWORD_PTR>(header->dwDstUser, header->cbDstLength));
    // ODD-112: for data beyond the limit this difference wraps, so more data is added and reported.
    const unsigned long count = std::min(used, m_ulMaxCompress - m_ulDataWrite);
    if (count == 0) return 0;
    DWORD written = 0;
    const bool done = WriteFile(m_hFile, header->pbDst, count, &written, nullptr) && written == count;
    m_ulDataWrite += written;
    if (ResultOfFile(done) != 0) return 1; // ODD-111: the file does not count as modified
    m_bMod = 1;
    ReportUnless(m_ulDataWrite <= m_ulMaxCompress, "m_ulDataWrite <= m_ulMaxCompress", kLongerThanLongest);
    return 0;
}

unsigned long CAudio::ReadBuffers() {
    return Mode().transfer == Transfer::FromFile ? ForEachBuffer(&CAudio::ReadBuffer) : 1;
}

unsigned long CAudio::ReadBuffer(ACMSTREAMHEADER* header) {
    if (Mode().transfer != Transfer::FromFile) return 0;
    if (m_ulDataRead == m_ulDataWrite) return 0; // ODD-113: the buffer plays its previous content
    if (header == nullptr) return 1;             // GUARD-09
    const unsigned long count = std::min<unsigned long>(header->cbSrcLength, m_ulDataWrite - m_ulDataRead);
    DWORD read = 0;
    (void)ResultOfFile(ReadFile(m_hFile, header->pbSrc, count, &read, nullptr) != 0);
    SetUncompressUse(header, read);
    m_ulDataRead += read;
    if (read == 0) return 1;
    ReportUnless(m_ulDataRead <= m_ulDataWrite, "m_ulDataRead <= m_ulDataWrite", kReadBeyondData);
    return 0;
}
