#pragma once

struct IAVIFile;

namespace tessel {

/// Notes which file an open movie is written to, so that CheckMovie() can verify it. Any thread may call these
/// functions. Without memory for the note the movie is not verified.
/// @param movie  the open movie
/// @param path   path of its file
void NoteMovie(IAVIFile* movie, const wchar_t* path);

/// Notes that a movie has a stream, so that its file cannot be empty.
/// @param movie  the open movie; one without a note is ignored
void NoteStream(IAVIFile* movie);

/// Verifies the file of a movie that was closed; a file that is not whole is removed. The note goes.
/// @param movie  what NoteMovie() was given; one without a note counts as whole
/// @return false: the file is not whole
bool CheckMovie(IAVIFile* movie);

} // namespace tessel
