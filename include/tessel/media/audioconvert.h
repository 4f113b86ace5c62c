#pragma once

#include <tessel/media/waveformat.h>

/// Compresses or decompresses a whole block of speech in memory in one call, while CAudio does so as it records and
/// plays: 8 kHz 8-bit mono PCM to GSM 6.10, or back.
///
/// Eight bytes of PCM are a thousandth of a second. A chunk is a second: 8,000 bytes of PCM or 1,625 of GSM 6.10. A
/// block is a fifth of one: 1,600 or 325 bytes. Convert() works on whole chunks, so pass whole chunks, and room for
/// them. The machine needs a GSM 6.10 codec that takes 8-bit PCM.
///
/// An object works in one direction, as often as you like. Copies are independent; a stream that a derived class has
/// left open is shared, and the last that closes it, or goes, closes it for all.
/// Threads: one at a time.
class TESSEL_API CAudioConvert {
public:
    /// Sets the direction; nothing is opened yet.
    /// @param bCompress  not 0: PCM becomes GSM 6.10; 0: GSM 6.10 becomes PCM
    explicit CAudioConvert(int bCompress);

    /// Copies everything.
    /// @param other  object to copy; without memory to share its open stream the copy has none
    CAudioConvert(const CAudioConvert& other);

    /// Copies everything, the direction too. A stream that was open before is closed.
    /// @param other  object to copy; without memory to share its open stream this one has none
    /// @return this object
    CAudioConvert& operator=(const CAudioConvert& other);

    /// Closes a stream that is still open, unless a copy uses it.
    virtual ~CAudioConvert();

    /// Converts sound into a new buffer.
    ///
    /// The number n of chunks is ulSrc / chunk, and one more when that is no multiple of 5. So a source of 6 or 6.5
    /// chunks is converted whole, while of 5.5 chunks only five are converted, and of less than one chunk none. What
    /// of the n chunks lies outside the source or the new buffer is left out, and what is not converted, or fails,
    /// stays zero. Failures are not told: look for the sound.
    ///
    /// @param pSrc        sound to convert; null converts nothing
    /// @param pDst        receives the new buffer, which is the caller's: free it with GlobalFree(). Null when there
    ///                    is no memory for it, or its size exceeds 32 bits
    /// @param ulSrc       bytes at pSrc
    /// @param ulDst       receives the bytes that the source's whole blocks become: ulSrc / block of the source *
    ///                    block of the destination. It counts what was left out too, and may exceed ulAllocDst. 0 when
    ///                    there is no buffer, or when it exceeds 32 bits
    /// @param ulAlloc     bytes of source to make room for; at least n chunks
    /// @param ulAllocDst  receives the bytes of the new buffer: ulAlloc / block of the source * block of the
    ///                    destination; 0 when there is none
    /// @return 0, always
    unsigned long Convert(char* pSrc, char*& pDst, unsigned long ulSrc, unsigned long& ulDst, unsigned long ulAlloc,
                          unsigned long& ulAllocDst);

protected:
    /// Fills in the format of 8 kHz 8-bit mono PCM.
    /// @param pFormat  record to fill; null is ignored
    static void InitWaveFormatPCM(WAVEFORMATEX* pFormat);

    /// Fills in the format of GSM 6.10.
    /// @param pFormat  record to fill; null is ignored
    static void InitWaveFormatGSM(WAVEFORMATGSM610* pFormat);

    /// Fills in a header without buffers, with the chunk sizes of the direction as its lengths.
    /// @param pHeader  record to fill; null is ignored
    void InitStreamHeader(ACMSTREAMHEADER* pHeader);

    /// Takes buffers and lengths out of a header.
    /// @param pHeader  record to clear; null is ignored
    void ClearStreamHeader(ACMSTREAMHEADER* pHeader);

    /// Opens the conversion stream.
    /// @return 0; 1: there is no codec, or the stream is open already
    unsigned long OpenStream();

    /// Closes the conversion stream; the handle is null afterwards. An open stream that a copy uses too stays open
    /// for it.
    /// @return 0; 1: the system refused, or there was no stream
    unsigned long CloseStream();

    /// Prepares a header for the stream.
    /// @param pHeader  header with its buffers and lengths
    /// @return 0; 1: the system refused, or it is null
    unsigned long PrepareStreamHeader(ACMSTREAMHEADER* pHeader);

    /// Ends the preparation of a header; one that is not prepared is left alone.
    /// @param pHeader  header, with the lengths that it was prepared with
    /// @return 0; 1: the system refused, or it is null
    unsigned long UnprepareStreamHeader(ACMSTREAMHEADER* pHeader);

    /// Converts whole codec blocks from a header's source to its destination.
    /// @param pHeader  prepared header
    /// @return 0; 1: the system refused, or it is null
    unsigned long ConvertBuffer(ACMSTREAMHEADER* pHeader);

    /// Is told the result of every step and keeps nothing of it.
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
