#pragma once

/// @file
/// An Audio Compression Manager driver that converts between 8-bit PCM and GSM 6.10, which some systems lack.
///
/// Wine's GSM 6.10 codec accepts only 16-bit PCM and refuses 8-bit PCM with ACMERR_NOTPOSSIBLE (512). Once this driver
/// is installed, acmStreamOpen() finds it in the process like any other; programs that record and play 8-bit sound need
/// no change. The driver widens the sound to 16 bits before the system's codec compresses it, and narrows what the
/// codec expands.
///
/// It supports exactly these two formats, in both directions:
///  - PCM: tag 1, one channel, 8000 Hz, 8 bits, block align 1;
///  - GSM 6.10: tag 49, one channel, 8000 Hz, block align 65, cbSize 2, 320 samples per block.
///
/// It refuses everything else, which stays with the system's drivers. Streams are synchronous. The system's drivers are
/// tried first, so one that converts 8-bit PCM itself takes precedence.

#ifndef TESSEL_GSM_BUILD
/// Marks the exports of TesselGsm.dll: exported while it is built, imported by programs.
#define TESSEL_GSM_API __declspec(dllimport)
#else
#define TESSEL_GSM_API __declspec(dllexport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Installs the driver for this process. Calls are counted: the first one installs, and each needs a matching
/// TesselGsmRemove(). At the end of the process the driver is removed in any case.
/// Threads: any; not from DllMain.
/// @return 0: installed; ACMERR_NOTPOSSIBLE (512): the system has no GSM 6.10 codec for 16-bit PCM; else the MMRESULT
///         of the system's refusal. A failed call does not count.
TESSEL_GSM_API unsigned int TesselGsmInstall(void);

/// Undoes one TesselGsmInstall(); the last call removes the driver. Close its handles (acmDriverClose()) first, let no
/// other thread open a stream meanwhile, because the system does not synchronise this, and remove the driver before
/// TesselGsm.dll is unloaded, because the system calls into it.
/// Threads: any; not from DllMain.
/// @return 0; ACMERR_BUSY (513): streams of the driver are open, and it stays installed;
///         MMSYSERR_INVALHANDLE (5): it is not installed; else the MMRESULT of the system's refusal, and it stays
TESSEL_GSM_API unsigned int TesselGsmRemove(void);

#ifdef __cplusplus
}
#endif
