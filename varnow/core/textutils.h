// Tests, cutting and Polish letters of texts. Nothing here refuses: bad arguments are clamped.
#pragma once

#include <varnow/core/text.h>

namespace varnow {

VARNOW_API int c_digit(char c);
/// 1 for digits and for + , - . E e
VARNOW_API int c_numerical(char c);
/// 1 when all characters pass c_numerical and the text is not empty; from 16 characters on it must
/// also hold a comma or a point, so that long identifiers of digits stay texts.
VARNOW_API int numerical(Text const& x);
/// 1 for ten characters, all digits but the fifth and the eighth, which are "-", "." or "/".
VARNOW_API int isdate(Text const& x);

/// The first n characters.
VARNOW_API Text part(Text const& x, int n);
/// n characters from position `from`, which is moved into the text; n is cut to what is there.
VARNOW_API Text subtext(Text const& x, int from, int n);
/// From position `from`, moved into the text, to the end.
VARNOW_API Text endtext(Text const& x, int from);
/// x between double quotes.
VARNOW_API Text quote(Text const& x);
/// n copies of one paragraph of filler, each with a closing blank.
VARNOW_API Text lorem_ipsum(int n);

/// The Latin letter in place of a Polish one in ISO-8859-2; any other byte as it is.
VARNOW_API char replace_pl(char c);
/// The byte that the console shows for a Polish letter in ISO-8859-2 once its code page was set;
/// these are not the codes of Windows-1250.
VARNOW_API char latin2_to_win1250(char c);
/// A Polish letter in ISO-8859-2 in UTF-8; any other byte as it is.
VARNOW_API Text latin2_to_utf8(char c);
/// The three for every byte of a text.
VARNOW_API Text remove_pl(Text const& x);
VARNOW_API Text to_win1250(Text const& x);
VARNOW_API Text to_utf8(Text const& x);

} // namespace varnow
