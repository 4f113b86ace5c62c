#pragma once

#include <tessel/foundation/platform.h>

/// @name Copying into a buffer of known size
///
/// The size counts characters of the destination. The length of the source alone decides whether a copy is truncated:
/// a source of exactly that size is, and loses its last character. Conversions use the C runtime's current locale,
/// which the library never sets.
///
/// A null pointer or a size of 0 is reported (WndLogAssert) and gives 1; the destination then receives an empty string
/// if there is room for one. Otherwise the destination is always terminated. A conversion stops at a character it
/// cannot convert. If the text grows, it may be truncated, even within a multi-byte character. The result shows
/// neither. Any thread.
///@{

/// Copies 8-bit text and clears the rest of the destination.
/// @param dest             receives the text, terminated
/// @param src              text to copy
/// @param destSizeInChars  size of @p dest in bytes, including the terminator
/// @return 0: the source is shorter than the size; 1: truncated, or an invalid argument
TESSEL_API unsigned long CopyString(char* dest, const char* src, unsigned int destSizeInChars);

/// Converts 16-bit text to 8-bit text (wcstombs).
/// @param dest             receives the text, terminated
/// @param src              text to convert
/// @param destSizeInChars  size of @p dest in bytes, including the terminator
/// @return 0: the source is shorter than the size; 1: truncated, or an invalid argument
TESSEL_API unsigned long CopyString(char* dest, const wchar_t* src, unsigned int destSizeInChars);

/// Converts 8-bit text to 16-bit text (mbstowcs).
/// @param dest             receives the text, terminated
/// @param src              text to convert
/// @param destSizeInChars  size of @p dest in characters, including the terminator
/// @return 0: the source is shorter than the size; 1: truncated, or an invalid argument
TESSEL_API unsigned long CopyString(wchar_t* dest, const char* src, unsigned int destSizeInChars);

/// Copies 16-bit text and clears the rest of the destination.
/// @param dest             receives the text, terminated
/// @param src              text to copy
/// @param destSizeInChars  size of @p dest in characters, including the terminator
/// @return 0: the source is shorter than the size; 1: truncated, or an invalid argument
TESSEL_API unsigned long CopyString(wchar_t* dest, const wchar_t* src, unsigned int destSizeInChars);
///@}

/// Narrows text by dropping the high byte of each character, unlike CopyString(), which converts.
/// Does nothing if a pointer is null. Any thread.
/// @param dest  receives the text; must hold the length of @p src plus one bytes
/// @param src   text to narrow
TESSEL_API void UNICODE_TO_ASCII(char* dest, const wchar_t* src);

/// Widens text byte by byte; bytes count as signed, so 0x80 to 0xFF become 0xFF80 to 0xFFFF.
/// Does nothing if a pointer is null. Any thread.
/// @param dest  receives the text; must hold the length of @p src plus one characters
/// @param src   text to widen
TESSEL_API void ASCII_TO_UNICODE(wchar_t* dest, const char* src);

/// @name Trimming white space in place
///
/// White space is what the C runtime's isspace or iswspace accepts; 8-bit characters from 0x80 are not white space. A
/// null pointer is returned unchanged. Any thread.
///@{

/// Removes leading white space by moving the text to the front.
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API char* TrimLeft(char* text);

/// Removes leading white space by moving the text to the front.
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API wchar_t* TrimLeft(wchar_t* text);

/// Removes trailing white space, unless only white space follows the first character: then it removes nothing. The
/// 16-bit form differs.
/// @param text  terminated text, changed in place
/// @return @p text
TESSEL_API char* TrimRight(char* text);

/// Removes trailing white space, but never the first character.
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
