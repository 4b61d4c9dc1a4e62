// Base64 (standard alphabet, '=' padding) as property lists write and read
// it: line-wrapped and indented on output, lenient on input.
#ifndef HALVANE_CF_BASE64_H
#define HALVANE_CF_BASE64_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace halvane::detail {

// Appends the encoding of bytes in lines of at most lineWidth characters (a
// multiple of 4), each line preceded by indent tabs and followed by '\n'.
// Nothing for no bytes.
void appendBase64Lines(std::string& out, const uint8_t* bytes, size_t length, size_t lineWidth, size_t indent);

// Appends the bytes that text encodes. Characters outside the alphabet and
// '=' are skipped, and characters that do not complete a group of four are
// dropped. Returns the index of the first byte >= 0x80, which is refused,
// or -1 when the whole text was read.
ptrdiff_t decodeBase64Leniently(const char* text, size_t length, std::vector<uint8_t>& out);

}  // namespace halvane::detail

#endif  // HALVANE_CF_BASE64_H
