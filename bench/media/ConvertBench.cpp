#include "media/Tone.h"

#include <benchmark/benchmark.h>
#include <tessel/media/audioconvert.h>
#include <tesselgsm/driver.h>

#include <string>

// A minute of speech in one call, through the same driver on both sides.

namespace {

constexpr unsigned long kSeconds = 60;
constexpr unsigned long kPcmChunk = 8000;
constexpr unsigned long kGsmChunk = 1625;

struct Direction {
    const char* name;
    int compress;
    WAVEFORMATEX pcm{WAVE_FORMAT_PCM, 1, 8000, 8000, 1, 8, 0};
    GSM610WAVEFORMAT gsm{{WAVE_FORMAT_GSM610, 1, 8000, 1625, 65, 0, 2}, 320};

    WAVEFORMATEX* Source() { return compress ? &pcm : &gsm.wfx; }
    WAVEFORMATEX* Destination() { return compress ? &gsm.wfx : &pcm; }
    unsigned long SourceChunk() const { return compress ? kPcmChunk : kGsmChunk; }
    unsigned long DestinationChunk() const { return compress ? kGsmChunk : kPcmChunk; }
};

char* ByTessel(Direction& direction, std::string& sound) {
    CAudioConvert converter(direction.compress);
    const auto size = static_cast<unsigned long>(sound.size());
    char* made = nullptr;
    unsigned long whole = 0;
    unsigned long allocated = 0;
    converter.Convert(sound.data(), made, size, whole, size, allocated);
    return made;
}

char* ByCalls(Direction& direction, std::string& sound) {
    auto* const made = static_cast<char*>(GlobalAlloc(GPTR, kSeconds * direction.DestinationChunk()));
    HACMSTREAM stream = nullptr;
    acmStreamOpen(&stream, nullptr, direction.Source(), direction.Destination(), nullptr, 0, 0, 0);
    ACMSTREAMHEADER header{};
    header.cbStruct = sizeof header;
    header.cbSrcLength = direction.SourceChunk();
    header.cbDstLength = direction.DestinationChunk();
    for (unsigned long second = 0; second < kSeconds; ++second) {
        header.pbSrc = reinterpret_cast<BYTE*>(sound.data()) + second * direction.SourceChunk();
        header.pbDst = reinterpret_cast<BYTE*>(made) + second * direction.DestinationChunk();
        acmStreamPrepareHeader(stream, &header, 0);
        acmStreamConvert(stream, &header, ACM_STREAMCONVERTF_BLOCKALIGN);
        acmStreamUnprepareHeader(stream, &header, 0);
    }
    acmStreamClose(stream, 0);
    return made;
}

std::string Sound(int compress) {
    std::string sound = tone::Sine(440, kSeconds * kPcmChunk);
    if (compress) return sound;
    Direction direction{"", 1};
    char* const gsm = ByCalls(direction, sound);
    sound.assign(gsm, kSeconds * kGsmChunk);
    GlobalFree(gsm);
    return sound;
}

void Convert(benchmark::State& state, Direction direction, char* (*convert)(Direction&, std::string&)) {
    TesselGsmInstall();
    std::string sound = Sound(direction.compress);
    const unsigned long last = kSeconds * direction.DestinationChunk() - 1;
    bool converted = true;
    for (auto _ : state) {
        char* const made = convert(direction, sound);
        converted = converted && made != nullptr && made[last] != 0;
        GlobalFree(made);
    }
    if (!converted) state.SkipWithError("nothing was converted");
    state.counters["times as fast as it sounds"] =
        benchmark::Counter(kSeconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    TesselGsmRemove();
}

const bool registered = [] {
    for (const Direction& direction :
         {Direction{"GSM from a minute of speech", 1}, Direction{"GSM to a minute of speech", 0}}) {
        const std::string name = direction.name;
        benchmark::RegisterBenchmark((name + "/Tessel").c_str(), Convert, direction, ByTessel)->UseRealTime();
        benchmark::RegisterBenchmark((name + "/Bare").c_str(), Convert, direction, ByCalls)->UseRealTime();
    }
    return true;
}();

} // namespace
