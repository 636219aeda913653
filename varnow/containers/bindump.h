// Internal: the pieces of a dump inside an open stream.
#pragma once

#include <varnow/containers/matrix.h>

#include <cstdio>

namespace varnow::detail {

/// x with six decimals and a blank, in every locale the same.
void write_number(std::FILE* f, double x);
/// The number that stands next, and the white space behind it; false for anything else.
bool read_number(std::FILE* f, double& x);
bool read_number(std::FILE* f, int& x);

/// `matrix::readbin` without its refusal: false where no whole dump stands, m being as it was.
bool read_dump(std::FILE* f, matrix& m);

} // namespace varnow::detail
