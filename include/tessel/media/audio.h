#pragma once

#include <tessel/media/waveformat.h>

namespace tessel {
struct AudioMode;
}

/// How far a run has come, in PCM bytes.
struct AUDIO_TIME {
    unsigned long ulPosition; ///< base and what the device reports, at most the limit, in whole blocks of 0.2 s
    unsigned long ulBase;     ///< where the run began; set by the derived class
    unsigned long ulLimit;    ///< where it ends; set by the derived class
};

/// The fields of CAudio, apart from its operations so that copying them stays member by member.
struct AUDIO_DATA {
    int m_bConvert;                     ///< not 0: the file holds GSM data; 0: it holds PCM
    HWND m_hParent;                     ///< window that gets the notifications
    int m_nMode;                        ///< a CAudio::MODE
    int m_bTimer;                       ///< not 0: the device timer runs
    int m_bStop;                        ///< not 0: the run is being stopped, no buffer is queued again
    int m_bMod;                         ///< not 0: the file was modified
    HANDLE m_hFile;                     ///< the file; null when closed
    wchar_t m_szPath[MAX_PATH];         ///< its path
    wchar_t m_szError[MAX_PATH];        ///< reserved; stays empty
    unsigned long m_ulDataWrite;        ///< bytes of data in the file
    AUDIO_TIME m_Record;                ///< where the recording is
    unsigned long m_ulDataRead;         ///< offset in the file of what is played next; recording starts there
    AUDIO_TIME m_Play;                  ///< where the playback is
    char* m_pAudio[2];                  ///< device buffers
    char* m_pCompress[2];               ///< file-side buffers; the device buffers when nothing is converted
    char* m_pAudioStep;                 ///< device buffer of a step
    char* m_pCompressStep;              ///< file-side buffer of a step
    unsigned long m_ulSizeAudio;        ///< bytes of a device buffer
    unsigned long m_ulSizeCompress;     ///< bytes of a file-side buffer
    unsigned long m_ulSizeAudioStep;    ///< bytes of the step's device buffer
    unsigned long m_ulSizeCompressStep; ///< bytes of the step's file-side buffer
    unsigned long m_ulRatioAudio;       ///< bytes on the device's side that become m_ulRatioCompress in the file
    unsigned long m_ulRatioCompress;    ///< see m_ulRatioAudio
    unsigned long m_ulMaxAudio;         ///< PCM bytes of the longest recording, 300 s
    unsigned long m_ulMaxCompress;      ///< bytes of its file
    unsigned long m_ulBlockAudio;       ///< PCM bytes of a block, 0.2 s
    unsigned long m_ulBlockCompress;    ///< its bytes in the file
    char m_cAudio[2][8000];             ///< storage of the device buffers
    char m_cCompress[2][1625];          ///< storage of the file-side buffers
    char m_cAudioStep[1600];            ///< storage of the step's device buffer
    char m_cCompressStep[325];          ///< storage of the step's file-side buffer
    HACMSTREAM m_hStream;               ///< conversion stream; null when closed
    ACMSTREAMHEADER m_StreamHeader[2];  ///< conversion of each buffer; dwSrcUser, dwDstUser: bytes in use
    ACMSTREAMHEADER m_StreamHeaderStep; ///< conversion of the step's buffer
    HWAVEIN m_hWaveIn;                  ///< input device; null when closed
    HWAVEOUT m_hWaveOut;                ///< output device; null when closed
    WAVEFORMATEX m_FormatPCM;           ///< format on the device's side
    WAVEFORMATGSM610 m_FormatGSM;       ///< format of a file that is converted
    WAVEHDR m_WaveHeader[2];            ///< the device buffers as the device knows them; dwUser: index
    WAVEHDR m_WaveHeaderStep;           ///< the step's
};

/// Records speech from the default input device into a file and plays it, compressed by GSM 6.10 in the file or not.
///
/// The device side is PCM: 8,000 samples a second, 8 bits, mono. The file holds bare data, without a header: PCM, 8,000
/// bytes a second, or GSM 6.10, 1,625 bytes a second. CreateWAV() makes a WAVE file of such data. Compression needs a
/// codec for GSM 6.10 on the machine that takes 8-bit PCM.
///
/// Derive from the class, and give it a window whose procedure forwards MM_WIM_DATA to ProcessWimData(), MM_WIM_CLOSE
/// to ProcessWimClose(), MM_WOM_DONE to ProcessWomDone(), MM_WOM_CLOSE to ProcessWomClose() and WM_TIMER with
/// TIMER_ID to ProcessTimer(). The order of a run:
/// 1. GetPath() is filled and AttachToFile() called, once.
/// 2. SetModeRecord(), SetModePlay() or SetModePlayStep(); base and limit of m_Record or m_Play are set, for a step the
///    position too; StartRecord(), StartPlay() or StartPlayStep(); StartDeviceTimer() to have the position followed.
/// 3. OnStop() is called at the limit, after a step and after any failure. Then, or whenever the user wishes, the
///    derived class sets m_bStop and calls StopWave().
/// 4. The device posts its close; ProcessWimClose() or ProcessWomClose() makes the object idle and calls OnQuit().
///
/// Playing continues where the last run stopped; a recording replaces everything behind that place, and takes five
/// minutes at most. A play-step plays one block of 0.2 s.
///
/// Results are 0 for success and 1 for failure; the cause is not kept.
/// Ownership: an object that goes, or is assigned to, stops and closes everything; the device's last messages still
/// come to the window: forward them no more. Copies have buffers of their own and share the window; file, timer, device
/// and conversion stay with the object that opened them, so a copy has no run. Threads: one, that of the window, from
/// which everything is called.
class TESSEL_API CAudio : protected AUDIO_DATA {
public:
    /// What the object does.
    enum MODE : int {
        MODE_IDLE = 0,     ///< nothing
        MODE_RECORD = 1,   ///< it records
        MODE_PLAY = 2,     ///< it plays
        MODE_PLAY_STEP = 3 ///< it plays one block
    };

    /// The device timer.
    enum TIMER : unsigned int {
        TIMER_ID = 6,         ///< its identifier
        TIMER_INTERVAL = 100, ///< milliseconds between its messages
    };

    /// Makes an idle object without file and window.
    /// @param bConvert  not 0: the file holds GSM data; 0: PCM
    explicit CAudio(int bConvert = 0);

    /// Copies every field, buffers included, but file, timer, device and conversion.
    /// @param other  object to copy
    CAudio(const CAudio& other);

    /// Copies every field, buffers included, but file, timer, device and conversion.
    /// @param other  object to copy
    /// @return this object
    CAudio& operator=(const CAudio& other);

    /// Ends a run that is under way, and closes the file.
    virtual ~CAudio();

    /// Chooses the window that gets the notifications; before a start.
    /// @param window  the window; it belongs to the calling thread
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

    /// Whether the file was modified: written to, or cleared.
    /// @return not 0: modified
    int GetMod() const;

    /// Room for the path of the file, which the caller writes there before AttachToFile().
    /// @return 260 characters, terminator included, inside this object
    wchar_t* GetPath();

    /// Chooses what the file holds; only without a run.
    /// @param bConvert  not 0: GSM data; 0: PCM
    void SetConvert(int bConvert);

    /// Takes the file's size as the bytes of data and goes to its start. A file that is missing is made. In MODE_IDLE
    /// the file must allow reading and writing.
    /// @return 0 or 1; 1: there are no data
    virtual unsigned long AttachToFile();

    /// Forgets the file's data: there are none, until AttachToFile().
    /// @return 0
    virtual unsigned long DetachFromFile();

    /// @name Runs
    /// A start during a run fails, and ends that run.
    ///@{

    /// Records, in MODE_RECORD, from m_ulDataRead on; what the file holds behind is cut off first.
    /// @return 0 or, after StartError(), 1
    unsigned long StartRecord();

    /// Plays, in MODE_PLAY, from m_ulDataRead on.
    /// @return 0 or, after StartError(), 1
    unsigned long StartPlay();

    /// Plays, in MODE_PLAY_STEP, the block at m_ulDataRead.
    /// @return 0 or, after StartError(), 1
    unsigned long StartPlayStep();

    /// Abandons a start: everything is stopped and closed, and the mode is MODE_IDLE. The device's close is still
    /// notified, if it was open; after a playback that moves m_ulDataRead to the start of the file. Start again only
    /// after that notification, which would end the new run and have OnQuit() called twice.
    /// @return 1
    unsigned long StartError();

    /// Takes the buffers back from the device of the mode and closes it. The notifications follow.
    void StopWave();

    /// Ends the conversion.
    void StopStream();

    /// Closes the file.
    void StopFile();
    ///@}

    /// Writes a WAVE file and replaces an existing one. If writing fails, as on a full disk, the file is removed. What
    /// is refused before that (a null path, too many bytes, a file that cannot be opened) leaves an existing file as it
    /// was.
    /// @param path         path of the file
    /// @param data         the data
    /// @param size         their bytes; for GSM data a multiple of 65
    /// @param bCompressed  not 0: they are GSM data; 0: PCM
    /// @return 0, also for null data or no bytes, which write nothing; 1: failure
    static unsigned long CreateWAV(const wchar_t* path, const char* data, unsigned long size, int bCompressed);

protected:
    /// @name Notification operations
    /// They do nothing here; a derived class overrides them.
    ///@{

    /// The controls are to be made fit for the mode.
    /// @param update  1
    virtual void SetControls(int update);

    /// The display is to be drawn.
    /// @param position  1: the position changed
    /// @param all       1: the run has ended, and everything may have changed; 0: it goes on
    virtual void UpdateDisplay(int position, int all);

    /// The run is to be stopped: its end is reached or something failed. It is called again until that is done.
    virtual void OnStop();

    /// The run has ended, and the object is idle.
    virtual void OnQuit();
    ///@}

public:
    /// The volume of the default output device.
    /// @param volume  receives what waveOutGetVolume gives, the left channel in the low word; 0 when that fails
    /// @return 0 or 1
    virtual unsigned long GetSystemVolume(unsigned long& volume);

    /// Only opens the output device and closes it: the volume stays as it is. The mixer is where it is set.
    /// @param volume  not used
    /// @return 0; 1: there is no output device
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

    /// Makes the three WAVEHDR records describe their device buffers.
    void InitWaveHeaders();

    /// Makes the step's conversion record describe its buffers.
    void InitStreamHeaders();

    /// Makes the two conversion records describe their buffers for MODE_RECORD or MODE_PLAY; other modes change
    /// nothing.
    void InitStreamHeadersConvert();

    /// Takes the buffers out of the two conversion records.
    void ClearStreamHeadersConvert();
    ///@}

    /// @name File steps
    /// The file is opened without sharing. Results are 0 or 1.
    ///@{

    /// Opens the file, or makes it: for reading and writing in MODE_IDLE, for writing in MODE_RECORD, for reading in
    /// the play modes. A file that was open before is closed in any case; opening the same one once more gives 1, since
    /// it is not shared.
    /// @return 0; 1: no file is open
    unsigned long OpenFile();

    /// Closes the file.
    /// @return 0, also when none is open; 1: the system refused
    unsigned long CloseFile();

    /// Sets m_ulDataWrite to the size of the open file.
    /// @return 0; 1: m_ulDataWrite is unchanged
    unsigned long SizeFile();

    /// Goes to where the mode writes (m_ulDataWrite) or reads (m_ulDataRead).
    /// @return 0 or 1, in MODE_IDLE 1
    unsigned long SeekFile();

    /// In MODE_RECORD cuts the file, which must not be open, at m_ulDataRead. Data that then end elsewhere are
    /// reported.
    /// @return 0, also in other modes; 1: the data do not end at m_ulDataRead
    unsigned long TruncateFile();

    /// Empties the file, which must exist and not be open, and marks it as modified if it held data.
    /// @return 0 or 1
    unsigned long ClearFile();

    /// Writes both buffers.
    /// @return 0; 1: failure, or not in MODE_RECORD
    unsigned long WriteBuffers();

    /// Writes the dwDstUser bytes of a buffer in MODE_RECORD, no more than the longest recording takes.
    /// @param header  the conversion record
    /// @return 0, also when nothing was to be written; 1: not everything was written
    unsigned long WriteBuffer(ACMSTREAMHEADER* header);

    /// Reads both buffers in MODE_PLAY, the step's in MODE_PLAY_STEP.
    /// @return 0; 1: failure, or another mode
    unsigned long ReadBuffers();

    /// Reads the next data into a buffer, in the play modes; at the end of the data the buffer stays as it is.
    /// @param header  the conversion record
    /// @return 0, also when nothing was to be read; 1: nothing could be read
    unsigned long ReadBuffer(ACMSTREAMHEADER* header);
    ///@}

    /// @name Conversion steps
    /// Without conversion they do nothing and succeed. Results are 0 or 1.
    ///@{

    /// Opens the conversion: to GSM in MODE_RECORD, from GSM in the play modes.
    /// @return 0; 1: no codec, MODE_IDLE, or one is open already
    unsigned long OpenStream();

    /// Closes the conversion.
    /// @return 0 or 1
    unsigned long CloseStream();

    /// Prepares the mode's records.
    /// @return 0 or 1, in MODE_IDLE 1
    unsigned long PrepareStreamHeaders();

    /// Prepares a record.
    /// @param header  the conversion record
    /// @return 0 or 1
    unsigned long PrepareStreamHeader(ACMSTREAMHEADER* header);

    /// Undoes the preparation of all records.
    /// @return 0 or 1
    unsigned long UnprepareStreamHeaders();

    /// Undoes the preparation of a record; one that is not prepared is left alone.
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

    /// Uncompresses both buffers in MODE_PLAY, the step's in MODE_PLAY_STEP.
    /// @return 0; 1: failure, or another mode
    unsigned long UncompressBuffers();

    /// Uncompresses a buffer.
    /// @param header  the conversion record
    /// @return 0 or 1
    unsigned long UncompressBuffer(ACMSTREAMHEADER* header);

    /// Notes how much of a source buffer was recorded. The rest is filled with zero bytes, and a part of a block counts
    /// as a whole one.
    /// @param header  the conversion record; its dwSrcUser and dwDstUser are set
    /// @param dwUse   PCM bytes
    void SetCompressUse(ACMSTREAMHEADER* header, unsigned long dwUse);

    /// Notes how much of a source buffer was read. The rest is filled with zero bytes; a part of a block is reported.
    /// @param header  the conversion record; its dwSrcUser and dwDstUser are set
    /// @param dwUse   bytes of the file
    void SetUncompressUse(ACMSTREAMHEADER* header, unsigned long dwUse);
    ///@}

    /// @name Device steps
    /// Input in MODE_RECORD, output in the play modes. Results are 0 or 1, in MODE_IDLE 1 unless nothing is to be done.
    ///@{

    /// Opens the device; an output device is paused at once.
    /// @return 0; 1: failure, or a device is open already
    unsigned long OpenWaveDevice();

    /// Closes the mode's device.
    /// @return 0, also when it is not open; 1: the system refused
    unsigned long CloseWaveDevice();

    /// Prepares the mode's records.
    /// @return 0 or 1
    unsigned long PrepareWaveHeaders();

    /// Prepares a record.
    /// @param header  record of the device
    /// @return 0 or 1
    unsigned long PrepareWaveHeader(WAVEHDR* header);

    /// Undoes the preparation of the mode's records.
    /// @return 0 or 1
    unsigned long UnprepareWaveHeaders();

    /// Undoes the preparation of a record; one that is not prepared is left alone.
    /// @param header  record of the device
    /// @return 0 or 1
    unsigned long UnprepareWaveHeader(WAVEHDR* header);

    /// Queues the mode's buffers.
    /// @return 0 or 1
    unsigned long AddWaveBuffers();

    /// Queues a buffer to be recorded into or played.
    /// @param header  record of the device
    /// @return 0 or 1
    unsigned long AddWaveBuffer(WAVEHDR* header);

    /// Takes all buffers back from the device.
    /// @return 0 or 1
    unsigned long RemoveWaveBuffers();

    /// Starts recording, or the output.
    /// @return 0 or 1
    unsigned long StartWaveDevice();
    ///@}

    /// @name Notifications
    /// The record is believed only when it is one of this object's; any other counts as a failure.
    ///@{

    /// A buffer came back from the input device: its audio is written to the file and the buffer is queued again,
    /// unless the run is being stopped. One that came back empty through a reset holds what the position tells.
    /// Failures call OnStop().
    /// @param device  the device
    /// @param header  its record
    void ProcessWimData(HWAVEIN device, WAVEHDR* header);

    /// The input device was closed: the run ends, at the end of the data.
    /// @param device  the device
    void ProcessWimClose(HWAVEIN device);

    /// A buffer was played: it is filled and queued again as long as there are data and the run is not being stopped.
    /// After a step the position is advanced and OnStop() called. Failures call OnStop().
    /// @param device  the device
    /// @param header  its record
    void ProcessWomDone(HWAVEOUT device, WAVEHDR* header);

    /// The output device was closed: the run ends, where the audio was heard last.
    /// @param device  the device
    void ProcessWomClose(HWAVEOUT device);

    /// The timer ticked: while it runs, position and display are brought up to date.
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

    /// Asks the device for the position of a recording or a continuous playback, and calls OnStop() at the limit. A
    /// limit that is not a whole number of blocks is never reached.
    /// @return 0; 1: the device does not tell, the position is unchanged
    unsigned long UpdateDeviceTime();

    /// Zeroes position, base and limit of a recording or a continuous playback.
    void ClearDeviceTime();

    /// The time that the run has reached; without a run, where the next one starts.
    /// @param seconds  receives the seconds
    /// @return 0
    unsigned long GetTimeCurrent(double& seconds) const;

    /// The length of the data; in MODE_RECORD that of the longest recording.
    /// @param seconds  receives the seconds
    /// @return 0
    unsigned long GetTimeTotal(double& seconds) const;
    ///@}

    /// @name Errors
    /// The codes of failures come here and are not kept.
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
    unsigned long PlayOn(WAVEHDR* header);
    unsigned long FileBytesPerSecond() const;
    unsigned long StartOutput();
    void FinishRun();
    void DetachFromRun();
    void UseOwnBuffers();
    void EndEveryRun();
};
