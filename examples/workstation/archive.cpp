#include "Bitmap.h"
#include "Manager.h"
#include "SavedImages.h"

#include <algorithm>
#include <string>

namespace {

constexpr unsigned int kTickMs = 50;
constexpr long kMovieMs = 100;

std::wstring TextOf(const CMail& mail) {
    constexpr unsigned long kCharacter = sizeof(wchar_t);
    const unsigned long characters = static_cast<unsigned long>(mail.Data().size()) / kCharacter;
    std::wstring text(characters, L'\0');
    (void)mail.Copy(text.data(), characters * kCharacter);
    return text;
}

/// The manager that assembles images from their lines and saves each complete one to a separate file and to the movie,
/// if there is one.
class Archive : public Manager {
public:
    Archive() : Manager(kArchiveId, kTickMs) {}

private:
    void OnOrder(const CMail& mail) override {
        if (mail.MsgId() == WORK_FOLDER) {
            m_folder = TextOf(mail);
        } else if (mail.MsgId() == WORK_MOVIE) {
            StartMovie(TextOf(mail));
        }
    }

    void OnLine(const Line& line) override {
        m_lines.Count(line.head);
        m_status.received = m_lines.received;
        m_status.lost = m_lines.lost;
        if (line.head.line == 0) m_linesOfImage = 0;
        std::copy(line.pixels.begin(), line.pixels.end(), m_image.data() + line.head.line * kImageWidth);
        if (++m_linesOfImage == kImageHeight && line.head.line == kImageHeight - 1) Save(line.head.image);
    }

    /// Receivers look for the file, so they notice if it could not be written.
    void Save(std::uint32_t image) {
        (void)SaveImage(ImagePath(m_folder, image), m_image);
        Film();
        m_saved.Add(image);
        (void)SayRest(); // again at the next tick
    }

    bool SayRest() override {
        return m_saved.Announce([this](auto number) { return Send(kWorkstationId, WORK_SAVED, number); });
    }

    /// A movie that cannot be created counts as one without images.
    void StartMovie(const std::wstring& path) {
        unsigned long greys[256];
        for (unsigned long grey = 0; grey < 256; ++grey) greys[grey] = RGB(grey, grey, grey);
        void* frame = nullptr; // the images are assembled elsewhere
        if (m_movie.Open(path.c_str()) != 0) return;
        (void)m_movie.InitializeStream(kImageWidth, kImageHeight, greys, frame);
    }

    /// Without a movie nothing is written.
    void Film() {
        const auto position = static_cast<long>(m_status.filmed) * kMovieMs;
        const auto size = static_cast<unsigned long>(m_image.size());
        if (m_movie.WriteFrame(position, m_image.data(), size) == 0) ++m_status.filmed;
    }

    std::filesystem::path m_folder;
    CAviFile m_movie;
    LineCount m_lines;
    Image m_image = Image(kImageWidth * kImageHeight);
    std::uint32_t m_linesOfImage = 0;
    SavedImages m_saved;
};

} // namespace

/// Runs until the workstation ends it.
extern "C" __declspec(dllexport) void ManagerMain(HINSTANCE /*module*/) {
    Archive().Run();
}
