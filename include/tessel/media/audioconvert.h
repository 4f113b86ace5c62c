#pragma once

#include <tessel/media/waveformat.h>

/// Converts speech in memory in one call: 8 kHz 8-bit mono PCM to GSM 6.10, or back. CAudio does the same while it
/// records and plays.
///
/// A chunk is one second: 8,000 bytes of PCM or 1,625 of GSM 6.10. A block is a fifth of a chunk: 1,600 or 325 bytes.
/// Convert() works on whole chunks, so pass whole chunks and enough room for them. It requires a GSM 6.10 codec that
/// accepts 8-bit PCM.
///
/// An object converts in one direction, any number of times. Copies are independent, except that they share a stream
/// that a derived class left open; the last copy closes it.
/// Threads: one at a time.
class TESSEL_API CAudioConvert {
public:
    /// Sets the direction. It opens nothing yet.
    /// @param bCompress  not 0: PCM becomes GSM 6.10; 0: GSM 6.10 becomes PCM
    explicit CAudioConvert(int bCompress);

    /// Copies everything.
    /// @param other  object to copy; if memory to share its open stream runs out, the copy has none
    CAudioConvert(const CAudioConvert& other);

    /// Copies everything, including the direction. A stream that was open before is closed.
    /// @param other  object to copy; if memory to share its open stream runs out, this object has none
    /// @return this object
    CAudioConvert& operator=(const CAudioConvert& other);

    /// Closes a stream that is still open, unless a copy uses it.
    virtual ~CAudioConvert();

    /// Converts sound into a new buffer.
    ///
    /// The number n of chunks is ulSrc / chunk, plus one unless that is a multiple of 5. So a source of 6 or 6.5 chunks
    /// is converted completely, but only five of 5.5 chunks are, and nothing of less than one chunk. Parts of the n
    /// chunks outside the source or the new buffer are skipped. What is skipped or fails stays zero. Failures are not
    /// reported: check whether the result contains sound.
    ///
    /// @param pSrc        sound to convert; null converts nothing
    /// @param pDst        receives the new buffer, which the caller frees with GlobalFree(). Null if there is no memory
    ///                    or the size exceeds 32 bits
    /// @param ulSrc       size of the source in bytes
    /// @param ulDst       receives the size of the source's whole blocks after conversion: ulSrc / block of the source
    ///                    * block of the destination. It includes what was skipped and may exceed ulAllocDst. 0 if
    ///                    there is no buffer or the size exceeds 32 bits
    /// @param ulAlloc     size of the source to allocate for, in bytes; at least n chunks
    /// @param ulAllocDst  receives the size of the new buffer in bytes: ulAlloc / block of the source * block of the
    ///                    destination; 0 if there is none
    /// @return always 0
    unsigned long Convert(char* pSrc, char*& pDst, unsigned long ulSrc, unsigned long& ulDst, unsigned long ulAlloc,
                          unsigned long& ulAllocDst);

protected:
    /// Fills in the format of 8 kHz 8-bit mono PCM.
    /// @param pFormat  record to fill; null is ignored
    static void InitWaveFormatPCM(WAVEFORMATEX* pFormat);

    /// Fills in the format of GSM 6.10.
    /// @param pFormat  record to fill; null is ignored
    static void InitWaveFormatGSM(WAVEFORMATGSM610* pFormat);

    /// Fills in a header without buffers; its lengths are the chunk sizes of the direction.
    /// @param pHeader  record to fill; null is ignored
    void InitStreamHeader(ACMSTREAMHEADER* pHeader);

    /// Removes buffers and lengths from a header.
    /// @param pHeader  record to clear; null is ignored
    void ClearStreamHeader(ACMSTREAMHEADER* pHeader);

    /// Opens the conversion stream.
    /// @return 0; 1: no codec, or the stream is already open
    unsigned long OpenStream();

    /// Closes the conversion stream and sets the handle to null. A stream that a copy uses too stays open for the copy.
    /// @return 0; 1: the system refused, or there was no stream
    unsigned long CloseStream();

    /// Prepares a header for the stream.
    /// @param pHeader  header with buffers and lengths
    /// @return 0; 1: the system refused, or it is null
    unsigned long PrepareStreamHeader(ACMSTREAMHEADER* pHeader);

    /// Unprepares a header; does nothing if it is not prepared.
    /// @param pHeader  header with the lengths that it was prepared with
    /// @return 0; 1: the system refused, or it is null
    unsigned long UnprepareStreamHeader(ACMSTREAMHEADER* pHeader);

    /// Converts whole codec blocks from the source of a header to its destination.
    /// @param pHeader  prepared header
    /// @return 0; 1: the system refused, or it is null
    unsigned long ConvertBuffer(ACMSTREAMHEADER* pHeader);

    /// Receives the result of every step and does nothing.
    /// @param uiError  MMRESULT of the system
    void SetStreamError(unsigned int uiError);

private:
    friend struct CAudioConvertLayout;

    enum : int { DIRECTION_COMPRESS = 0, DIRECTION_DECOMPRESS = 1 };

    template <class Value> Value SourceOf(Value pcm, Value gsm) const {
        return m_nDirection == DIRECTION_COMPRESS ? pcm : gsm;
    }
    template <class Value> Value DestinationOf(Value pcm, Value gsm) const {
        return m_nDirection == DIRECTION_COMPRESS ? gsm : pcm;
    }
    unsigned long CountChunks(unsigned long sourceSize) const;
    unsigned long long InBlocks(unsigned long sourceSize) const;
    unsigned long ResultOfStream(unsigned int error);
    void ConvertChunks(char* source, unsigned long sourceSize, char* destination, unsigned long room);
    void ConvertChunk(char* source, unsigned long sourceSize, char* destination, unsigned long room);

    int m_nDirection;
    unsigned long m_ulChunkPCM;
    unsigned long m_ulChunkGSM;
    unsigned long m_ulBlockPCM;
    unsigned long m_ulBlockGSM;
    WAVEFORMATEX m_FormatPCM;
    WAVEFORMATGSM610 m_FormatGSM;
    HACMSTREAM m_hStream;
    ACMSTREAMHEADER m_StreamHeader;
};
