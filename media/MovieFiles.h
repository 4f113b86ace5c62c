#pragma once

struct IAVIFile;

namespace tessel {

/// Records the path of an open movie so that CheckMovie() can verify the file. Without memory for the record, the movie
/// is not verified. Any thread may call these functions.
/// @param movie  the open movie
/// @param path   path of its file
void RecordMovie(IAVIFile* movie, const wchar_t* path);

/// Records that a movie has a stream, so that an empty file counts as incomplete.
/// @param movie  the open movie; ignored without a record
void RecordStream(IAVIFile* movie);

/// Verifies the file of a closed movie, removes it if it is incomplete, and drops the record.
/// @param movie  as passed to RecordMovie(); counts as complete without a record
/// @return false: the file is incomplete
bool CheckMovie(IAVIFile* movie);

} // namespace tessel
