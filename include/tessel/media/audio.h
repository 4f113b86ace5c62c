#pragma once

#include <tessel/media/waveformat.h>

namespace tessel {
struct AudioMode;
}

/// How far a run has come, in PCM bytes.
struct AUDIO_TIME {
    unsigned long ulPosition; ///< base plus what the device reports, at most the limit, in whole blocks of 0.2 s
    unsigned long ulBase;     ///< where the run started; set by the derived class
    unsigned long ulLimit;    ///< where it ends, a whole number of blocks; set by the derived class
};

/// The fields of CAudio, in a separate base class so that they are copied member by member.
struct AUDIO_DATA {
    int m_bConvert;                     ///< not 0: the file holds GSM data; 0: it holds PCM
    HWND m_hParent;                     ///< window that receives the notifications
    int m_nMode;                        ///< a CAudio::MODE
    int m_bTimer;                       ///< not 0: the device timer is running
    int m_bStop;                        ///< not 0: the run is stopping and queues no more buffers
    int m_bMod;                         ///< not 0: the file was modified
    HANDLE m_hFile;                     ///< the file; null when closed
    wchar_t m_szPath[MAX_PATH];         ///< its path
    wchar_t m_szError[MAX_PATH];        ///< reserved; always empty
    unsigned long m_ulDataWrite;        ///< bytes of data in the file
    AUDIO_TIME m_Record;                ///< progress of a recording
    unsigned long m_ulDataRead;         ///< offset in the file where playback continues and recording starts
    AUDIO_TIME m_Play;                  ///< progress of a playback
    char* m_pAudio[2];                  ///< device buffers
    char* m_pCompress[2];               ///< file-side buffers; without conversion the device buffers
    char* m_pAudioStep;                 ///< device buffer of a step
    char* m_pCompressStep;              ///< file-side buffer of a step
    unsigned long m_ulSizeAudio;        ///< bytes of a device buffer
    unsigned long m_ulSizeCompress;     ///< bytes of a file-side buffer
    unsigned long m_ulSizeAudioStep;    ///< bytes of the step's device buffer
    unsigned long m_ulSizeCompressStep; ///< bytes of the step's file-side buffer
    unsigned long m_ulRatioAudio;       ///< bytes on the device side that become m_ulRatioCompress in the file
    unsigned long m_ulRatioCompress;    ///< see m_ulRatioAudio
    unsigned long m_ulMaxAudio;         ///< PCM bytes of the longest recording, 300 s
    unsigned long m_ulMaxCompress;      ///< bytes of that recording in the file
    unsigned long m_ulBlockAudio;       ///< PCM bytes of a block, 0.2 s
    unsigned long m_ulBlockCompress;    ///< bytes of a block in the file
    char m_cAudio[2][8000];             ///< storage of the device buffers
    char m_cCompress[2][1625];          ///< storage of the file-side buffers
    char m_cAudioStep[1600];            ///< storage of the step's device buffer
    char m_cCompressStep[325];          ///< storage of the step's file-side buffer
    HACMSTREAM m_hStream;               ///< conversion stream; null when closed
    ACMSTREAMHEADER m_StreamHeader[2];  ///< conversion of each buffer; dwSrcUser, dwDstUser: bytes in use
    ACMSTREAMHEADER m_StreamHeaderStep; ///< conversion of the step buffer
    HWAVEIN m_hWaveIn;                  ///< input device; null when closed
    HWAVEOUT m_hWaveOut;                ///< output device; null when closed
    WAVEFORMATEX m_FormatPCM;           ///< format on the device side
    WAVEFORMATGSM610 m_FormatGSM;       ///< format of a compressed file
    WAVEHDR m_WaveHeader[2];            ///< the device's records of the device buffers; dwUser: index
    WAVEHDR m_WaveHeaderStep;           ///< the device's record of the step buffer
};

/// Records speech from the default input device to a file and plays it back, optionally compressed with GSM 6.10.
///
/// The device side is PCM: 8,000 samples a second, 8 bits, mono. The file holds raw data without a header: PCM at 8,000
/// bytes a second, or GSM 6.10 at 1,625 bytes a second. CreateWAV() turns such data into a WAVE file. Compression
/// requires a GSM 6.10 codec that accepts 8-bit PCM.
///
/// Derive from the class and give it a window whose procedure forwards MM_WIM_DATA to ProcessWimData(), MM_WIM_CLOSE to
/// ProcessWimClose(), MM_WOM_DONE to ProcessWomDone(), MM_WOM_CLOSE to ProcessWomClose() and WM_TIMER with TIMER_ID to
/// ProcessTimer(). The order of calls:
/// 1. Once: write the path to GetPath(), then call AttachToFile().
/// 2. For each run: SetModeRecord(), SetModePlay() or SetModePlayStep(). Set base and limit of m_Record or m_Play, for
///    a step the position, too. Call StartRecord(), StartPlay() or StartPlayStep(), then StartDeviceTimer() to follow
///    the position.
/// 3. The class calls OnStop() at the limit, after a step and after any failure. Then, or when the user stops the run,
///    the derived class sets m_bStop and calls StopWave().
/// 4. The device posts its close; ProcessWimClose() or ProcessWomClose() makes the object idle and calls OnQuit().
///
/// Playback continues where the last run stopped. A recording replaces everything after that position and lasts at most
/// five minutes. A play-step plays one block of 0.2 s.
///
/// Set limits in whole blocks: the position is rounded down to whole blocks, so a run whose limit is not one does not
/// end by itself.
///
/// Results are 0 for success and 1 for failure; the cause is not kept.
/// Ownership: destroying an object, or assigning to it, stops the run and closes everything. The device's last messages
/// still arrive at the window: stop forwarding them. A copy has its own buffers and shares the window, but not file,
/// timer, device and conversion, so it has no run.
/// Threads: call everything from the thread of the window.
class TESSEL_API CAudio : protected AUDIO_DATA {
public:
    /// What the object does.
    enum MODE : int {
        MODE_IDLE = 0,     ///< nothing
        MODE_RECORD = 1,   ///< records
        MODE_PLAY = 2,     ///< plays
        MODE_PLAY_STEP = 3 ///< plays one block
    };

    /// The device timer.
    enum TIMER : unsigned int {
        TIMER_ID = 6,         ///< identifier
        TIMER_INTERVAL = 100, ///< milliseconds between messages
    };

    /// Makes an idle object without a file or window.
    /// @param bConvert  not 0: the file holds GSM data; 0: PCM
    explicit CAudio(int bConvert = 0);

    /// Copies every field, buffers included, but file, timer, device and conversion.
    /// @param other  object to copy
    CAudio(const CAudio& other);

    /// Copies every field, buffers included, but file, timer, device and conversion.
    /// @param other  object to copy
    /// @return this object
    CAudio& operator=(const CAudio& other);

    /// Ends a run in progress and closes the file.
    virtual ~CAudio();

    /// Sets the window that receives the notifications. Call it before a start.
    /// @param window  window of the calling thread
    void SetParentWindow(HWND window);

    /// Sets MODE_IDLE.
    void SetModeIdle();
    /// Sets MODE_RECORD.
    void SetModeRecord();
    /// Sets MODE_PLAY.
    void SetModePlay();
    /// Sets MODE_PLAY_STEP.
    void SetModePlayStep();

    /// Marks the file as modified or not.
    /// @param bMod  not 0: modified
    void SetMod(int bMod);

    /// Whether the file was modified: written to or cleared.
    /// @return not 0: modified
    int GetMod() const;

    /// Returns the buffer for the path of the file. Write the path there before AttachToFile().
    /// @return buffer of 260 characters, including the terminator, inside this object
    wchar_t* GetPath();

    /// Sets what the file holds. Do not call it during a run.
    /// @param bConvert  not 0: GSM data; 0: PCM
    void SetConvert(int bConvert);

    /// Uses the size of the file as the length of the data, and seeks to its start. A missing file is created. In
    /// MODE_IDLE the file must be readable and writable.
    /// @return 0; 1: failure, there is no data
    virtual unsigned long AttachToFile();

    /// Forgets the data of the file until the next AttachToFile().
    /// @return 0
    virtual unsigned long DetachFromFile();

    /// @name Runs
    /// A start during a run fails and ends that run.
    ///@{

    /// In MODE_RECORD, records from m_ulDataRead on. It first truncates the file there, before it opens the device: the
    /// old data after that position is lost even if no device is available.
    /// @return 0 or, after StartError(), 1
    unsigned long StartRecord();

    /// In MODE_PLAY, plays from m_ulDataRead on.
    /// @return 0 or, after StartError(), 1
    unsigned long StartPlay();

    /// In MODE_PLAY_STEP, plays the block at m_ulDataRead.
    /// @return 0 or, after StartError(), 1
    unsigned long StartPlayStep();

    /// Abandons a start: stops and closes everything and sets MODE_IDLE. If the device was open, its close is still
    /// notified; after a playback this moves m_ulDataRead to the start of the file. Start again only after that
    /// notification: otherwise it ends the new run and OnQuit() is called twice.
    /// @return 1
    unsigned long StartError();

    /// Takes the buffers back from the mode's device and closes it. The notifications follow.
    void StopWave();

    /// Ends the conversion.
    void StopStream();

    /// Closes the file.
    void StopFile();
    ///@}

    /// Writes a WAVE file and replaces an existing one. If writing fails, as on a full disk, the file is removed. An
    /// error before that (a null path, too many bytes, a file that cannot be opened) leaves an existing file unchanged.
    /// @param path         path of the file
    /// @param data         the data
    /// @param size         their bytes; for GSM data a multiple of 65
    /// @param bCompressed  not 0: they are GSM data; 0: PCM
    /// @return 0, also for null data or no bytes, which write nothing; 1: failure
    static unsigned long CreateWAV(const wchar_t* path, const char* data, unsigned long size, int bCompressed);

protected:
    /// @name Notification operations
    /// They do nothing; a derived class overrides them.
    ///@{

    /// Called when the controls should be updated for the mode.
    /// @param update  1
    virtual void SetControls(int update);

    /// Called when the display should be updated.
    /// @param position  1: the position changed
    /// @param all       1: the run has ended and everything may have changed; 0: it continues
    virtual void UpdateDisplay(int position, int all);

    /// Called when the run should be stopped, at its end or after a failure. The call is repeated until it is stopped.
    virtual void OnStop();

    /// Called when the run has ended and the object is idle.
    virtual void OnQuit();
    ///@}

public:
    /// Reads the volume of the default output device.
    /// @param volume  receives the result of waveOutGetVolume, the left channel in the low word; 0 after a failure
    /// @return 0 or 1
    virtual unsigned long GetSystemVolume(unsigned long& volume);

    /// Only opens and closes the output device; it does not set the volume. Use CSound for that.
    /// @param volume  not used
    /// @return 0; 1: no output device
    virtual unsigned long SetSystemVolume(unsigned long volume);

protected:
    /// @name Records
    ///@{

    /// Fills the PCM format.
    /// @param format  record to fill; null is ignored
    static void InitWaveFormatPCM(WAVEFORMATEX* format);

    /// Fills the GSM 6.10 format.
    /// @param format  record to fill; null is ignored
    static void InitWaveFormatGSM(WAVEFORMATGSM610* format);

    /// Sets up the three WAVEHDR records for their device buffers.
    void InitWaveHeaders();

    /// Sets up the conversion record of the step for its buffers.
    void InitStreamHeaders();

    /// Sets up the two conversion records for MODE_RECORD or MODE_PLAY; does nothing in other modes.
    void InitStreamHeadersConvert();

    /// Removes the buffers from the two conversion records.
    void ClearStreamHeadersConvert();
    ///@}

    /// @name File steps
    /// The file is opened without sharing. Results are 0 or 1.
    ///@{

    /// Opens or creates the file: for reading and writing in MODE_IDLE, for writing in MODE_RECORD, for reading in the
    /// play modes. It always closes the file that was open; opening the same file again returns 1, as it is not shared.
    /// @return 0; 1: no file is open
    unsigned long OpenFile();

    /// Closes the file.
    /// @return 0, also if none is open; 1: the system refused
    unsigned long CloseFile();

    /// Sets m_ulDataWrite to the size of the open file.
    /// @return 0; 1: m_ulDataWrite is unchanged
    unsigned long SizeFile();

    /// Seeks to where the mode writes (m_ulDataWrite) or reads (m_ulDataRead).
    /// @return 0 or 1; 1 in MODE_IDLE
    unsigned long SeekFile();

    /// In MODE_RECORD, truncates the file at m_ulDataRead; the file must not be open. It reports if the data does not
    /// end there afterwards.
    /// @return 0, also in other modes; 1: the data does not end at m_ulDataRead
    unsigned long TruncateFile();

    /// Empties the file and marks it as modified if it held data. The file must exist and not be open.
    /// @return 0 or 1
    unsigned long ClearFile();

    /// Writes both buffers.
    /// @return 0; 1: failure, or not in MODE_RECORD
    unsigned long WriteBuffers();

    /// In MODE_RECORD, writes the dwDstUser bytes of a buffer, up to the length of the longest recording.
    /// @param header  the conversion record
    /// @return 0, also if there was nothing to write; 1: not everything was written
    unsigned long WriteBuffer(ACMSTREAMHEADER* header);

    /// Reads both buffers in MODE_PLAY, the step buffer in MODE_PLAY_STEP.
    /// @return 0; 1: failure, or another mode
    unsigned long ReadBuffers();

    /// In the play modes, reads the next data into a buffer. At the end of the data the buffer is unchanged.
    /// @param header  the conversion record
    /// @return 0, also if there was nothing to read; 1: nothing could be read
    unsigned long ReadBuffer(ACMSTREAMHEADER* header);
    ///@}

    /// @name Conversion steps
    /// Without conversion they do nothing and succeed. Results are 0 or 1.
    ///@{

    /// Opens the conversion: to GSM in MODE_RECORD, from GSM in the play modes.
    /// @return 0; 1: no codec, MODE_IDLE, or already open
    unsigned long OpenStream();

    /// Closes the conversion.
    /// @return 0 or 1
    unsigned long CloseStream();

    /// Prepares the conversion records of the mode.
    /// @return 0 or 1; 1 in MODE_IDLE
    unsigned long PrepareStreamHeaders();

    /// Prepares a record.
    /// @param header  the conversion record
    /// @return 0 or 1
    unsigned long PrepareStreamHeader(ACMSTREAMHEADER* header);

    /// Unprepares all conversion records.
    /// @return 0 or 1
    unsigned long UnprepareStreamHeaders();

    /// Unprepares a record; does nothing if it is not prepared.
    /// @param header  the conversion record
    /// @return 0 or 1
    unsigned long UnprepareStreamHeader(ACMSTREAMHEADER* header);

    /// Compresses both buffers.
    /// @return 0; 1: failure, or not in MODE_RECORD
    unsigned long CompressBuffers();

    /// Compresses a buffer.
    /// @param header  the conversion record
    /// @return 0 or 1
    unsigned long CompressBuffer(ACMSTREAMHEADER* header);

    /// Uncompresses both buffers in MODE_PLAY, the step buffer in MODE_PLAY_STEP.
    /// @return 0; 1: failure, or another mode
    unsigned long UncompressBuffers();

    /// Uncompresses a buffer.
    /// @param header  the conversion record
    /// @return 0 or 1
    unsigned long UncompressBuffer(ACMSTREAMHEADER* header);

    /// Sets how much of a source buffer was recorded. The rest is filled with zero bytes, and a partial block counts as
    /// a whole one.
    /// @param header  the conversion record; its dwSrcUser and dwDstUser are set
    /// @param dwUse   PCM bytes
    void SetCompressUse(ACMSTREAMHEADER* header, unsigned long dwUse);

    /// Sets how much of a source buffer was read. The rest is filled with zero bytes; a partial block is reported.
    /// @param header  the conversion record; its dwSrcUser and dwDstUser are set
    /// @param dwUse   bytes of the file
    void SetUncompressUse(ACMSTREAMHEADER* header, unsigned long dwUse);
    ///@}

    /// @name Device steps
    /// They use the input device in MODE_RECORD, the output device in the play modes. Results are 0 or 1; in MODE_IDLE
    /// 1, unless there is nothing to do.
    ///@{

    /// Opens the device and pauses an output device at once.
    /// @return 0; 1: failure, or a device is already open
    unsigned long OpenWaveDevice();

    /// Closes the device of the mode.
    /// @return 0, also if it is not open; 1: the system refused
    unsigned long CloseWaveDevice();

    /// Prepares the device records of the mode.
    /// @return 0 or 1
    unsigned long PrepareWaveHeaders();

    /// Prepares a record.
    /// @param header  record of the device
    /// @return 0 or 1
    unsigned long PrepareWaveHeader(WAVEHDR* header);

    /// Unprepares the device records of the mode.
    /// @return 0 or 1
    unsigned long UnprepareWaveHeaders();

    /// Unprepares a record; does nothing if it is not prepared.
    /// @param header  record of the device
    /// @return 0 or 1
    unsigned long UnprepareWaveHeader(WAVEHDR* header);

    /// Queues the buffers of the mode.
    /// @return 0 or 1
    unsigned long AddWaveBuffers();

    /// Queues a buffer for recording or playing.
    /// @param header  record of the device
    /// @return 0 or 1
    unsigned long AddWaveBuffer(WAVEHDR* header);

    /// Takes all buffers back from the device.
    /// @return 0 or 1
    unsigned long RemoveWaveBuffers();

    /// Starts recording or output.
    /// @return 0 or 1
    unsigned long StartWaveDevice();
    ///@}

    /// @name Notifications
    /// A record that is not one of this object's own is not read and counts as a failure.
    ///@{

    /// Handles a buffer from the input device: writes its audio to the file and queues it again unless the run is
    /// stopping. For a buffer that a reset returned empty, the amount recorded is taken from the position. A failure
    /// calls OnStop().
    /// @param device  the device
    /// @param header  its record
    void ProcessWimData(HWAVEIN device, WAVEHDR* header);

    /// Handles the close of the input device: the run ends at the end of the data.
    /// @param device  the device
    void ProcessWimClose(HWAVEIN device);

    /// Handles a buffer that was played: fills and queues it again while there is data and the run is not stopping.
    /// After a step it advances the position and calls OnStop(). A failure calls OnStop().
    /// @param device  the device
    /// @param header  its record
    void ProcessWomDone(HWAVEOUT device, WAVEHDR* header);

    /// Handles the close of the output device: the run ends at the last position that was heard.
    /// @param device  the device
    void ProcessWomClose(HWAVEOUT device);

    /// Handles a timer message: while the timer is running, updates position and display.
    /// @param id  identifier of the timer
    void ProcessTimer(unsigned int id);
    ///@}

    /// @name Timing
    ///@{

    /// Starts the timer TIMER_ID of the window.
    /// @return 0; 1: the system refused
    unsigned long StartDeviceTimer();

    /// Stops the timer.
    void StopDeviceTimer();

    /// Reads the position of a recording or a continuous playback from the device, and calls OnStop() at the limit. A
    /// limit that is not a whole number of blocks is never reached.
    /// @return 0; 1: the device has no position in bytes, and the old one is kept
    unsigned long UpdateDeviceTime();

    /// Zeroes position, base and limit of a recording or a continuous playback.
    void ClearDeviceTime();

    /// Returns the position of the run; without a run, where the next one starts.
    /// @param seconds  receives the seconds
    /// @return 0
    unsigned long GetTimeCurrent(double& seconds) const;

    /// Returns the length of the data; in MODE_RECORD the length of the longest recording.
    /// @param seconds  receives the seconds
    /// @return 0
    unsigned long GetTimeTotal(double& seconds) const;
    ///@}

    /// @name Errors
    /// They receive the codes of failures and keep none.
    ///@{

    /// Does nothing.
    void ClearError();

    /// Does nothing.
    /// @param error  Win32 error
    void SetFileError(unsigned int error);

    /// Does nothing.
    /// @param error  MMRESULT of the conversion
    void SetStreamError(unsigned int error);

    /// Does nothing.
    /// @param error  MMRESULT of the device
    void SetWaveError(unsigned int error);

    /// Does nothing.
    /// @param error  unchanged
    /// @param text   unchanged
    void GetError(unsigned int& error, wchar_t* text) const;
    ///@}

private:
    friend struct CAudioLayout;

    HANDLE OpenPath(unsigned long access, unsigned long disposition);
    unsigned long ResultOfFile(bool succeeded);
    unsigned long ResultOfStream(MMRESULT result);
    unsigned long ResultOfWave(MMRESULT result);
    const tessel::AudioMode& Mode() const;
    unsigned long ForEachBuffer(unsigned long (CAudio::*step)(ACMSTREAMHEADER*));
    unsigned long ForEachBuffer(unsigned long (CAudio::*step)(WAVEHDR*));
    unsigned long ConvertBuffer(ACMSTREAMHEADER* header);
    ACMSTREAMHEADER* StreamHeaderOf(const WAVEHDR* header);
    unsigned long GetDevicePosition(unsigned long& bytes);
    unsigned long RecordedByPosition() const;
    unsigned long StoreRecorded(WAVEHDR* header);
    unsigned long ContinuePlayback(WAVEHDR* header);
    unsigned long FileBytesPerSecond() const;
    unsigned long StartOutput();
    void FinishRun();
    void DetachFromRun();
    void UseOwnBuffers();
    void EndEveryRun();
};
