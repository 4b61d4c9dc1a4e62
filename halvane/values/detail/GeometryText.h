// The text forms that points, sizes and rectangles share.
#ifndef HALVANE_VALUES_DETAIL_GEOMETRYTEXT_H
#define HALVANE_VALUES_DETAIL_GEOMETRYTEXT_H

#include <halvane/text/HVString.h>

#include <vector>

namespace halvane::detail {

// The parts of text between the separators, in order; one part (the text
// itself) when the separator does not occur, none for a null text.
std::vector<HVString> TextComponents(const HVString& text, const HVString& separator);

// "{%1.0f,%1.0f}" or "{%f,%f}" of two numbers.
HVString RoundedPairText(double first, double second);
HVString PairDescription(double first, double second);

// Reads "{first,second}" with every brace removed; a missing part reads as 0.
void ReadPairText(const HVString& text, double& first, double& second);

}  // namespace halvane::detail

#endif  // HALVANE_VALUES_DETAIL_GEOMETRYTEXT_H
