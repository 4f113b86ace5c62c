#pragma once

#include <tessel/foundation/platform.h>

struct IAVIFile;
struct IAVIStream;

/// Writes a sequence of images of one size, 8 bits a pixel with a palette of 256 colours, into an AVI file: either
/// uncompressed, each image at a millisecond of the writer's choice, or compressed at a fixed number of images a
/// second. Every image is a key frame.
///
/// In this order: Open(), one of the two InitializeStream(), WriteFrame() for each image, Close(). The file can be
/// played once it is closed.
///
/// Results are 0, or the result of the AVI file function that failed (AVIERR_...), or -1 (0xFFFFFFFF) for what the
/// object itself refuses: FAILED() holds for all failures.
///
/// Rows: a width that is a multiple of 4 suits every player and codec. The rows of an image follow one another without
/// padding at any width, while the rows of a bitmap are by rights padded to a multiple of 4 bytes. At another width a
/// player that judges by the size of an uncompressed image shows it as it is; players that do not, and codecs, read it
/// askew.
///
/// The object sees to AVIFileInit() and AVIFileExit() itself, from Open() to Close(); programs need not call them.
/// Copies share the file, its streams and the buffers, until one of them gets a stream of its own; the last of them to
/// be closed completes the file. A copy that cannot share a buffer for lack of memory refuses to write.
/// Threads: one at a time for an object and its copies, from Open() to Close() the same one.
class TESSEL_API CAviFile {
public:
    /// Opens no file.
    CAviFile();

    /// Shares file, streams and buffers.
    /// @param other  object to copy
    CAviFile(const CAviFile& other);

    /// Closes what this object had and shares what the other one has.
    /// @param other  object to copy
    /// @return this object
    CAviFile& operator=(const CAviFile& other);

    /// Closes the file.
    virtual ~CAviFile();

    /// Closes the file that is open and makes a new one (AVIFileOpenW).
    /// @param path  file, as a rule with the extension ".avi", by which the system chooses the format; an existing one
    ///              is emptied
    /// @return 0; AVIERR_FILEOPEN (0x8004406F): it cannot be made; -1: no path; else what the system says
    unsigned long Open(const wchar_t* path);

    /// Completes the file and frees the buffers, including the caller's frame. Without an open file it only frees the
    /// buffers.
    ///
    /// Completing the file can fail where WriteFrame() did not, as on a full disk. A file that is then not whole is
    /// reported and removed. With copies, this happens when the last of them is closed.
    void Close();

    /// Makes a stream of uncompressed images whose positions are milliseconds, and a frame to draw each image in. A
    /// millisecond without an image takes 24 bytes of the file.
    ///
    /// A stream that was made before ends; whether a file takes a second one is the system's to say. After a failure
    /// there is no stream, but for a refused argument, which leaves the object as it was.
    /// @param width    pixels in a row, at least 1
    /// @param height   rows, at least 1
    /// @param palette  256 colours, red in the lowest byte, then green, then blue (COLORREF)
    /// @param frame    receives the frame: height rows of width bytes, the bottom row first, black at the beginning if
    ///                 that is the palette's first colour. It belongs to the object and stays valid until the next call
    ///                 of this operation or Close(). Null when there is none
    /// @return 0; -1: no palette, a size below 1 or of more than some 2^31 bytes, no memory or no open file; else the
    ///         result of AVIFileCreateStreamW or AVIStreamSetFormat
    unsigned long InitializeStream(int width, int height, unsigned long* palette, void*& frame);

    /// Makes a stream of compressed images whose positions count images, from 0. There is no frame to draw in: give the
    /// images to WriteFrame(). A stream that was made before ends as in the other form.
    ///
    /// When the codec takes no images of this kind, the result tells so, and yet images can be written: they go
    /// uncompressed into a stream without a format, which no player shows. Close the file and remove it.
    ///
    /// Wine 8 has no "MSVC" codec that compresses, and its run-length codec writes beyond its own buffer when an image
    /// of 255 pixels or more in a row has many runs: use it there for narrow or plain images only.
    /// @param width    pixels in a row, at least 1
    /// @param height   rows, at least 1
    /// @param palette  256 colours, as above; how a codec deals with colours that look alike is its own affair
    /// @param rate     images a second, at least 1
    /// @param bRLE     nonzero: the run-length codec "MRLE"; 0: the codec "MSVC"
    /// @param quality  per cent, for "MSVC"
    /// @return 0; -1 as above; else the result of AVIFileCreateStreamW (AVIERR_BADPARAM for a rate of 0),
    ///         AVIMakeCompressedStream (AVIERR_NOCOMPRESSOR: there is no such codec) or AVIStreamSetFormat
    unsigned long InitializeStream(int width, int height, unsigned long* palette, int rate, int bRLE, int quality);

    /// Writes what is drawn in the frame. The frame stays, to draw the next image over it.
    /// @param position  of the image: milliseconds, or a number in a compressed stream; greater than the one before
    /// @return 0; -1: there is no stream, or no frame of its size; else the result of AVIStreamWrite
    unsigned long WriteFrame(long position);

    /// Writes an image whose top row comes first.
    /// @param position  as above
    /// @param pixels    height rows of width bytes
    /// @param size      their number in bytes; another one than width times height is reported. Of a smaller image the
    ///                  whole rows are written, and below them what was written there before, zeros at first; of a
    ///                  larger one, what fits
    /// @return 0; -1: there is no stream, or no pixels; else the result of AVIStreamWrite
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
