#pragma once

#include <tessel/foundation/platform.h>

struct IAVIFile;
struct IAVIStream;

/// Writes a sequence of images to an AVI file. All images have the same size, 8 bits per pixel and a palette of 256
/// colours. They are either uncompressed, each at a millisecond that the program chooses, or compressed at a fixed
/// frame rate. Every image is a key frame.
///
/// Call Open(), one of the two forms of InitializeStream(), WriteFrame() for each image, then Close(). The file can be
/// played once it is closed.
///
/// Results are 0, the result of the AVI file function that failed (AVIERR_...), or -1 (0xFFFFFFFF) for calls that the
/// class rejects. FAILED() is true for every failure.
///
/// Use a width that is a multiple of 4. The rows of an image follow one another without padding at any width, although
/// the rows of a bitmap should be padded to a multiple of 4 bytes. At other widths, a player that relies on the size of
/// an uncompressed image shows it correctly; other players, and codecs, show it skewed.
///
/// The class calls AVIFileInit() and AVIFileExit(); programs need not.
/// Copies share the file, its streams and the buffers until one of them creates its own stream. Closing the last copy
/// completes the file. A copy that cannot share a buffer for lack of memory refuses to write.
/// Threads: one at a time for an object and its copies, the same one from Open() to Close().
class TESSEL_API CAviFile {
public:
    /// Makes an object without a file.
    CAviFile();

    /// Shares file, streams and buffers.
    /// @param other  object to copy
    CAviFile(const CAviFile& other);

    /// Closes the file of this object and shares that of the other one.
    /// @param other  object to copy
    /// @return this object
    CAviFile& operator=(const CAviFile& other);

    /// Closes the file.
    virtual ~CAviFile();

    /// Closes the file that is open and creates a new one (AVIFileOpenW).
    /// @param path  file; the system chooses the format by its extension, usually ".avi". An existing file is emptied
    /// @return 0; AVIERR_FILEOPEN (0x8004406F): it cannot be created; -1: no path; else the result of the system
    unsigned long Open(const wchar_t* path);

    /// Completes the file and frees the buffers, including the caller's frame. Without an open file it only frees the
    /// buffers.
    ///
    /// Completing the file can fail where WriteFrame() did not, as on a full disk. An incomplete file is reported and
    /// removed. With copies, this happens when the last of them is closed.
    void Close();

    /// Makes a stream of uncompressed images whose positions are milliseconds, and a frame in which to draw each image.
    /// Each millisecond without an image takes 24 bytes of the file.
    ///
    /// It ends an earlier stream; whether a file accepts a second one depends on the system. After a failure there is
    /// no stream. An invalid argument leaves the object unchanged.
    /// @param width    pixels per row, at least 1
    /// @param height   rows, at least 1
    /// @param palette  256 colours, red in the lowest byte, then green, then blue (COLORREF)
    /// @param frame    receives the frame: height rows of width bytes, the bottom row first, filled with the first
    ///                 colour of the palette. The object owns it; it is valid until the next call of this operation or
    ///                 Close(). Null after a failure
    /// @return 0; -1: no palette, a size below 1 or above about 2^31 bytes, no memory or no open file; else the result
    ///         of AVIFileCreateStreamW or AVIStreamSetFormat
    unsigned long InitializeStream(int width, int height, unsigned long* palette, void*& frame);

    /// Makes a stream of compressed images whose positions count images from 0. It has no frame to draw in: pass the
    /// images to WriteFrame(). It ends an earlier stream as the other form does.
    ///
    /// If the codec refuses images of this kind, the result is its error, yet images can still be written. They go
    /// uncompressed to a stream without a format, which no player shows: close the file and delete it.
    ///
    /// Under Wine 8, the "MSVC" codec does not compress, and the run-length codec writes beyond its own buffer for
    /// images that are 255 or more pixels wide and have many runs: use it for narrow or plain images only.
    /// @param width    pixels per row, at least 1
    /// @param height   rows, at least 1
    /// @param palette  256 colours, as above; a codec may merge similar colours
    /// @param rate     images per second, at least 1
    /// @param bRLE     not 0: the run-length codec "MRLE"; 0: the codec "MSVC"
    /// @param quality  per cent, for "MSVC"
    /// @return 0; -1 as above; else the result of AVIFileCreateStreamW (AVIERR_BADPARAM for a rate of 0),
    ///         AVIMakeCompressedStream (AVIERR_NOCOMPRESSOR: no such codec) or AVIStreamSetFormat
    unsigned long InitializeStream(int width, int height, unsigned long* palette, int rate, int bRLE, int quality);

    /// Writes the frame. Its content stays, so the next image can be drawn over it.
    /// @param position  of the image: milliseconds, or the number of the image in a compressed stream. Must increase
    /// @return 0; -1: no stream, or no frame of its size; else the result of AVIStreamWrite
    unsigned long WriteFrame(long position);

    /// Writes an image whose top row comes first.
    /// @param position  as above
    /// @param pixels    height rows of width bytes
    /// @param size      size of the pixels in bytes; it is reported if it is not width times height. Of a smaller image
    ///                  the whole rows are written, and the rows below keep the previous content, initially zeros; of a
    ///                  larger one, what fits
    /// @return 0; -1: no stream, or no pixels; else the result of AVIStreamWrite
    unsigned long WriteFrame(long position, unsigned char* pixels, unsigned long size);

private:
    friend struct CAviFileLayout;

    void ShareWith(const CAviFile& other);
    void ReleaseStreams();
    void ReleaseHeader();
    void ReleaseFrame();
    bool CanKeepHeader(int width, int height) const;
    void CreateBitmapHeaderBuffer(int width, int height, unsigned long* palette, BITMAPINFOHEADER*& header);
    bool CanWrite() const;
    unsigned long WritePixels(long position) const;

    IAVIFile* m_pFile;
    IAVIStream* m_pStream;
    IAVIStream* m_pCompressed;
    unsigned char* m_pHeader;
    unsigned char* m_pPixels;
    unsigned char* m_pFrame;
    int m_iHeight;
    int m_iWidth;
};
