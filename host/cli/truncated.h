// Pictures that were cut off, in the formats whose libraries fill up the rest in silence.
#pragma once
#include <string>

namespace cli {

// True for a JPEG or DPX file that ends before its picture does.
bool isTruncated(const std::string& file);

} // namespace cli
