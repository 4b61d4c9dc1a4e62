// Small helpers shared by the CoreFoundation tests.
#ifndef HALVANE_TESTS_CF_SUPPORT_H
#define HALVANE_TESTS_CF_SUPPORT_H

#include <CoreFoundation/CoreFoundation.h>

#include <string>
#include <utility>

namespace cftest {

// Owns one reference and releases it when it goes out of scope.
template <typename Ref>
class Owned {
public:
    Owned() = default;
    explicit Owned(Ref ref) : ref_(ref) {}
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    Owned(Owned&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    ~Owned() {
        if (ref_ != nullptr) CFRelease(ref_);
    }
    Ref get() const { return ref_; }
    operator Ref() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }

private:
    Ref ref_ = nullptr;
};

template <typename Ref>
Owned<Ref> own(Ref ref) {
    return Owned<Ref>(ref);
}

// The UTF-16 units of a string, read through the public interface.
inline std::u16string units(CFStringRef s) {
    std::u16string out(size_t(CFStringGetLength(s)), u'\0');
    CFStringGetCharacters(s, CFRangeMake(0, CFIndex(out.size())), out.data());
    return out;
}

inline Owned<CFStringRef> string(std::u16string_view text) {
    return own(CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(text.data()),
                                            CFIndex(text.size())));
}

// Text of an ASCII-only string, for readable assertions.
inline std::string ascii(CFStringRef s) {
    std::u16string u = units(s);
    return std::string(u.begin(), u.end());
}

inline constexpr CFIndex kImmortal = 0x0FFFFFFFFFFFFFFFL;

}  // namespace cftest

#endif  // HALVANE_TESTS_CF_SUPPORT_H
