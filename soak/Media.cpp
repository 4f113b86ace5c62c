#include "Subject.h"

#include <tessel/media/audioconvert.h>
#include <tessel/media/avifile.h>
#include <tesselgsm/driver.h>

#include <cstring>
#include <string>

namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 64;

void MakeMovie() {
    unsigned long greys[256];
    for (unsigned long grey = 0; grey < 256; ++grey) greys[grey] = RGB(grey, grey, grey);
    CAviFile movie;
    void* frame = nullptr;
    Require(movie.Open(L"soak.avi") == 0, "the movie is made");
    Require(movie.InitializeStream(kWidth, kHeight, greys, frame) == 0, "the movie has a stream");
    std::memset(frame, 100, kWidth * kHeight);
    for (long image = 0; image < 5; ++image) Require(movie.WriteFrame(image * 40) == 0, "an image is written");
    movie.Close();
    DeleteFileW(L"soak.avi");
}

/// @return the sound in the other format
std::string Converted(int compress, std::string sound) {
    CAudioConvert converter(compress);
    const auto size = static_cast<unsigned long>(sound.size());
    char* made = nullptr;
    unsigned long whole = 0;
    unsigned long allocated = 0;
    const bool done = converter.Convert(sound.data(), made, size, whole, size, allocated) == 0;
    std::string result(made, made == nullptr ? 0 : whole);
    GlobalFree(made);
    Require(done && !result.empty(), "sound is converted");
    return result;
}

void ConvertSpeech() {
    static const bool installed = TesselGsmInstall() == 0;
    Require(installed, "there is a driver");
    (void)Converted(0, Converted(1, std::string(16000, '\x80')));
}

const Subject movies("movies", MakeMovie);
const Subject speech("speech conversion", ConvertSpeech);

} // namespace
