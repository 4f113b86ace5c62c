#pragma once

/// @file
/// A driver of the Audio Compression Manager for 8-bit PCM to and from GSM 6.10, which some systems lack.
///
/// Wine's GSM 6.10 codec takes 16-bit PCM only and refuses 8-bit PCM with ACMERR_NOTPOSSIBLE (512). Once this driver is
/// installed, acmStreamOpen() finds it in the process like any other; whoever records and plays 8-bit sound goes on
/// unchanged. The sound is widened to 16 bits and compressed by the system's own codec, or expanded by it and narrowed.
///
/// It serves exactly these two formats, in both directions:
///  - PCM: tag 1, one channel, 8000 Hz, 8 bits, block align 1;
///  - GSM 6.10: tag 49, one channel, 8000 Hz, block align 65, cbSize 2, 320 samples a block.
///
/// Everything else is refused, so that the system's drivers are asked. Streams are synchronous; the driver is asked
/// after those of the system, and where one of them converts 8-bit PCM itself, that one is taken.

#ifndef TESSEL_GSM_BUILD
/// Marks what TesselGsm.dll offers: imported by programs, exported while it is built.
#define TESSEL_GSM_API __declspec(dllimport)
#else
#define TESSEL_GSM_API __declspec(dllexport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Installs the driver for this process. Calls are counted: the first one installs, and each wants its
/// TesselGsmRemove(). What is still installed at the end of the process goes with it.
/// Threads: any; not from DllMain.
/// @return 0: installed; ACMERR_NOTPOSSIBLE (512): the system has no GSM 6.10 codec for 16-bit PCM; else the MMRESULT
///         with which the system refused. After a failure nothing is counted.
TESSEL_GSM_API unsigned int TesselGsmInstall(void);

/// Takes back one TesselGsmInstall(); the last one removes the driver. Close its handles (acmDriverClose()) before, let
/// no other thread open a stream meanwhile, which the system does not order, and remove it before TesselGsm.dll is
/// unloaded, for the system calls into it.
/// Threads: any; not from DllMain.
/// @return 0; ACMERR_BUSY (513): streams of the driver are open, and it stays installed;
///         MMSYSERR_INVALHANDLE (5): it is not installed; else the MMRESULT with which the system refused, and it stays
TESSEL_GSM_API unsigned int TesselGsmRemove(void);

#ifdef __cplusplus
}
#endif
