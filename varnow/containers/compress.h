// Packing files with gzip, and containers written to and read from packed files.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>

namespace varnow {

/// Packs or unpacks a file into another one; 0 on success, 1 on failure. What fails is printed to
/// standard error: "ERROR: Opening file `NAME' failed.", or Reading, or Writing. The new file comes
/// to its place whole: after a failure, which a truncated or damaged packed file is as well, what
/// stood there still stands.
VARNOW_API int gzip(char const* in, char const* out);
VARNOW_API int gunzip(char const* in, char const* out);

/// writetxt of a matrix or table, packed when gz is not 0; the name on disk then has ".gz" added.
/// - returns: with gz the result of `gzip`, or 1 when the text could not be written; without it 0,
///   since the writing is then repeated every second until it succeeds and `fatal` plays no part
template <class T>
VARNOW_API int write_data(data<T> const& object, char const* name, int gz = 0, int show = 0,
                          int rownames = 0, int header = 1, int quotes = 0, char sep = '\t',
                          char dec = '.', int fatal = 1);
/// readtxt of a matrix or table, unpacked when gz is not 0; the name on disk then has ".gz" added.
/// - returns: with gz the result of `gunzip`; when that fails the object is unchanged, or the
///   reading refused if `fatal` is not 0. Without gz 0, and the reading is repeated every second
///   until it succeeds
template <class T>
VARNOW_API int read_data(data<T>& object, char const* name, int gz = 0, int show = 0,
                         int rownames = 0, int header = 1, int quotes = 0, char sep = '\t',
                         int fatal = 1);

} // namespace varnow
