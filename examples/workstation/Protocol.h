#pragma once

#include <tessel/tessel.h>

#include <cstdint>
#include <span>

/// The messages between the programs and managers of the workstation. Records have fields of fixed width, because the
/// console and the workstation may differ in bitness.

inline constexpr ORCAOBJID kWorkstationId{3000};
inline constexpr ORCAOBJID kAcquisitionId{3001};
inline constexpr ORCAOBJID kArchiveId{3002};
inline constexpr ORCAOBJID kConsoleId{3003};

/// Name of the registered message that is the heartbeat.
inline constexpr wchar_t kHeartbeatName[] = L"Tessel workstation heartbeat";

/// Message words.
enum WORK_MESSAGE : unsigned long {
    WORK_START = 1,  ///< acquire this many more images, a std::uint32_t; 0: until stopped
    WORK_STOP = 2,   ///< stop after the current image
    WORK_EXIT = 3,   ///< end
    WORK_FOLDER = 4, ///< where to save images, UTF-16
    WORK_LINE = 5,   ///< a line of an image: LineHead and its grey values
    WORK_STATUS = 6, ///< what a manager has done so far, a ManagerStatus
    WORK_SAVED = 7,  ///< an image is saved: its number, a std::uint32_t
    WORK_GONE = 8,   ///< a manager's last message, a ManagerStatus
    WORK_MOVIE = 9   ///< the file that all images go into one after another, UTF-16
};

/// Which line it is.
struct LineHead {
    std::uint32_t image; ///< number of the image, from 1
    std::uint32_t line;  ///< from the top, from 0
};

/// What a manager has done so far.
struct ManagerStatus {
    std::uint32_t sent;       ///< lines
    std::uint32_t received;   ///< lines
    std::uint32_t lost;       ///< lines that were never received
    std::uint32_t heartbeats; ///< that it heard
    std::uint32_t filmed;     ///< images in the movie
};

/// The bytes of a record, as a message carries it.
template <class Record> std::span<const unsigned char> BytesOf(const Record& record) {
    return {reinterpret_cast<const unsigned char*>(&record), sizeof record};
}
