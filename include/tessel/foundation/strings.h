#pragma once

#include <tessel/foundation/platform.h>

/// @name Copying into a buffer of known size
///
/// The size counts characters of the destination. Whether a copy counts as truncated follows from the
/// source's length alone: a source of exactly that size does, and loses its last character. Both widths
/// convert with the C runtime in its current locale, which the library never sets.
///
/// A null pointer or a size of 0 is reported (WndLogAssert); nothing but an empty string is then written,
/// where there is room for one, and the result is 1. Otherwise the destination is always terminated. A conversion
/// that meets a character it cannot convert stops there, and one whose text grows may be cut short, even within
/// a multi-byte character; neither shows in the result. Any thread.
///@{

/// Copies 8-bit text and clears the rest of the destination.
/// @param dest             receives the text, terminated
/// @param src              text to copy
/// @param destSizeInChars  room in @p dest in bytes, terminator included
/// @return 0: the source is shorter than the room; 1: truncated, or a bad argument
TESSEL_API unsigned long CopyString(char* dest, const char* src, unsigned int destSizeInChars);

/// Converts 16-bit text to 8-bit text (wcstombs).
/// @param dest             receives the text, terminated
/// @param src              text to convert
/// @param destSizeInChars  room in @p dest in bytes, terminator included
/// @return 0: the source is shorter than the room; 1: truncated, or a bad argument
TESSEL_API unsigned long CopyString(char* dest, const wchar_t* src, unsigned int destSizeInChars);

/// Converts 8-bit text to 16-bit text (mbstowcs).
/// @param dest             receives the text, terminated
/// @param src              text to convert
/// @param destSizeInChars  room in @p dest in characters, terminator included
/// @return 0: the source is shorter than the room; 1: truncated, or a bad argument
TESSEL_API unsigned long CopyString(wchar_t* dest, const char* src, unsigned int destSizeInChars);

/// Copies 16-bit text and clears the rest of the destination.
/// @param dest             receives the text, terminated
/// @param src              text to copy
/// @param destSizeInChars  room in @p dest in characters, terminator included
/// @return 0: the source is shorter than the room; 1: truncated, or a bad argument
TESSEL_API unsigned long CopyString(wchar_t* dest, const wchar_t* src, unsigned int destSizeInChars);
///@}

/// Narrows text by dropping the high byte of each character, unlike CopyString(), which converts.
/// Null pointers copy nothing. Any thread.
/// @param dest  receives the text; must hold the length of @p src plus one bytes
/// @param src   text to narrow
TESSEL_API void UNICODE_TO_ASCII(char* dest, const wchar_t* src);

/// Widens text byte by byte; bytes count as signed, so 0x80 to 0xFF become 0xFF80 to 0xFFFF.
/// Null pointers copy nothing. Any thread.
/// @param dest  receives the text; must hold the length of @p src plus one characters
/// @param src   text to widen
TESSEL_API void ASCII_TO_UNICODE(wchar_t* dest, const char* src);

/// @name Trimming white space in place
///
/// White space is what the C runtime's isspace or iswspace accepts; 8-bit characters from 0x80 on are
/// none. A null pointer is handed back as it is. Any thread.
///@{

/// Moves the text to the front over its leading white space.
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API char* TrimLeft(char* text);

/// Moves the text to the front over its leading white space.
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API wchar_t* TrimLeft(wchar_t* text);

/// Cuts trailing white space, unless nothing but white space follows the first character: then nothing
/// is cut. The 16-bit form differs.
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API char* TrimRight(char* text);

/// Cuts trailing white space behind the first character, which is never cut itself.
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API wchar_t* TrimRight(wchar_t* text);

/// TrimLeft(), then TrimRight().
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API char* Trim(char* text);

/// TrimLeft(), then TrimRight().
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API wchar_t* Trim(wchar_t* text);
///@}
