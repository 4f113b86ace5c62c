#include "Conversion.h"

#include <tessel/media/audio.h>
#include <tessel/media/audioconvert.h>

#include <algorithm>
#include <climits>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

namespace {

constexpr unsigned long kPcmChunk = 8000;
constexpr unsigned long kGsmChunk = 1625;
constexpr unsigned long kPcmBlock = 1600;
constexpr unsigned long kGsmBlock = 325;

std::vector<char> ReadAll(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool WriteAll(const std::wstring& path, const char* data, unsigned long size) {
    std::ofstream file(std::filesystem::path(path), std::ios::binary);
    file.write(data, static_cast<std::streamsize>(size));
    file.close();
    return file.good();
}

/// CAudioConvert converts whole chunks: the last one is padded with silence, which is removed afterwards.
bool Recode(std::vector<char> source, bool compress, const std::wstring& to) {
    const unsigned long block = compress ? kPcmBlock : kGsmBlock;
    const unsigned long chunk = compress ? kPcmChunk : kGsmChunk;
    const auto blocks = static_cast<unsigned long>((source.size() + block - 1) / block);
    const auto whole = static_cast<unsigned long>((source.size() + chunk - 1) / chunk * chunk);
    source.resize(whole, compress ? char(0x80) : char(0));
    CAudioConvert convert(compress);
    char* target = nullptr;
    unsigned long used = 0;
    unsigned long allocated = 0;
    convert.Convert(source.data(), target, whole, used, whole, allocated);
    if (target == nullptr) return false;
    // Convert() does not report failures: without a codec the target stays empty.
    const bool converted = std::any_of(target, target + allocated, [](char byte) { return byte != 0; });
    const bool written = converted && WriteAll(to, target, blocks * (compress ? kGsmBlock : kPcmBlock));
    GlobalFree(target);
    return written;
}

} // namespace

bool EndsIn(const std::wstring& name, const std::wstring& end) {
    return name.size() >= end.size() && _wcsicmp(name.c_str() + name.size() - end.size(), end.c_str()) == 0;
}

bool ConvertFile(const std::wstring& from, const std::wstring& to) {
    std::vector<char> source = ReadAll(from);
    if (source.empty() || source.size() > LONG_MAX) return false;
    const bool compressed = EndsIn(from, L".gsm");
    if (EndsIn(to, L".wav")) {
        return CAudio::CreateWAV(to.c_str(), source.data(), static_cast<unsigned long>(source.size()), compressed) == 0;
    }
    if (compressed == EndsIn(to, L".gsm"))
        return WriteAll(to, source.data(), static_cast<unsigned long>(source.size()));
    return Recode(std::move(source), !compressed, to);
}
