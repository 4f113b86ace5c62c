#include <tessel/tessel.h>

#include <cstdio>
#include <cstring>

int main() {
    constexpr int kWidth = 160;
    constexpr int kHeight = 120;
    unsigned long greys[256];
    for (unsigned long grey = 0; grey < 256; ++grey) greys[grey] = RGB(grey, grey, grey);

    CAviFile movie;
    void* frame = nullptr;
    if (movie.Open(L"movie.avi") != 0 || movie.InitializeStream(kWidth, kHeight, greys, frame) != 0) return 1;
    for (int image = 0; image < 25; ++image) {
        auto* row = static_cast<unsigned char*>(frame);
        for (int y = 0; y < kHeight; ++y, row += kWidth) {
            std::memset(row, 0, kWidth);
            std::memset(row + image * 6, 255, 12);
        }
        if (movie.WriteFrame(image * 40) != 0) return 1; // milliseconds
    }
    movie.Close();
    std::puts("movie.avi: 25 images, 1 second");
    return 0;
}
