// The search engine behind CFStringFind and friends, shared by the
// functions that search (finding, splitting, replacing) and by those that
// need grapheme clusters.
#ifndef HALVANE_CF_STRING_SEARCH_INTERNAL_H
#define HALVANE_CF_STRING_SEARCH_INTERNAL_H

#include "CFStringInternal.h"

#include <type_traits>
#include <utility>

namespace halvane::detail {

// A callable passed down without being copied or allocated; it must
// outlive the call it is passed to.
template <typename Signature>
class FunctionRef;

template <typename Result, typename... Arguments>
class FunctionRef<Result(Arguments...)> {
public:
    template <typename F, typename = std::enable_if_t<!std::is_same_v<std::decay_t<F>, FunctionRef>>>
    FunctionRef(F&& f)  // NOLINT(google-explicit-constructor): meant to be passed lambdas directly
        : object_(const_cast<void*>(static_cast<const void*>(&f))), call_([](void* object, Arguments... arguments) {
              return Result((*static_cast<std::remove_reference_t<F>*>(object))(std::forward<Arguments>(arguments)...));
          }) {}
    Result operator()(Arguments... arguments) const { return call_(object_, std::forward<Arguments>(arguments)...); }

private:
    void* object_;
    Result (*call_)(void*, Arguments...);
};

// Calls visit(match) for the occurrences of needle in range of s, as
// CFStringFindWithOptions defines them: in search order (from the end with
// kCFCompareBackwards), never overlapping, and with kCFCompareAnchored only
// the one at the start (end) of the range. Stops when visit returns false.
// s and needle are strings, range lies inside s; an empty needle or range
// has no occurrence.
void forEachMatch(CFStringRef s, CFRange range, CFStringRef needle, CFStringCompareFlags options,
                  FunctionRef<bool(CFRange)> visit);

// True when index (0 to the length) does not split a grapheme cluster.
bool isGraphemeBoundary(CFStringRef s, CFIndex index);

// The grapheme cluster (surrogate pair, base and combining marks, CR LF,
// ...) containing the unit at index, which lies inside s.
CFRange composedCharacterRange(CFStringRef s, CFIndex index);

}  // namespace halvane::detail

#endif  // HALVANE_CF_STRING_SEARCH_INTERNAL_H
