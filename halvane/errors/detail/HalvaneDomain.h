// The domain of the library's own errors; not part of the exported
// interface.
#ifndef HALVANE_ERRORS_DETAIL_HALVANEDOMAIN_H
#define HALVANE_ERRORS_DETAIL_HALVANEDOMAIN_H

class HVString;

namespace halvane::detail {

// "HalvaneDomain"
const HVString& HalvaneDomain();

}  // namespace halvane::detail

#endif  // HALVANE_ERRORS_DETAIL_HALVANEDOMAIN_H
