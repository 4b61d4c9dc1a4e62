// The container bookkeeping of the property-list walk, and the reasons the
// writer gives for refusing a list.
#include "CFPropertyListTraversal.h"

#include <cstdlib>
#include <cstring>

namespace halvane::detail {

namespace {

const char* classNameOf(CFTypeID type) {
    const CFRuntimeClass* cls = classOf(type);
    return cls != nullptr && cls->className != nullptr ? cls->className : "(unknown)";
}

// Pointers are 16-byte aligned: their low bits say nothing.
inline size_t slotHash(CFTypeRef container) {
    return size_t((reinterpret_cast<uintptr_t>(container) >> 4) * 0x9E3779B97F4A7C15ull);
}

}  // namespace

std::string plistIssueText(const PlistIssue& issue) {
    switch (issue.problem) {
        case PlistProblem::kInvalidType:
            return std::string("property lists cannot contain objects of type '") + classNameOf(issue.type) + "'";
        case PlistProblem::kNonStringKey:
            return std::string("property list dictionaries may only have keys which are CFStrings, not '") +
                   classNameOf(issue.type) + "'";
        case PlistProblem::kNullInArray:
            return "property list arrays cannot contain NULL";
        case PlistProblem::kNullKey:
            return "property list dictionaries cannot contain NULL keys";
        case PlistProblem::kNullValue:
            return "property list dictionaries cannot contain NULL values";
        case PlistProblem::kRecursive:
            return "property lists cannot contain recursive container references";
        case PlistProblem::kTooManyReferences:
            return "Too many nested arrays or dictionaries please use kCFPropertyListBinaryFormat_v1_0 instead which "
                   "supports references";
        case PlistProblem::kUnwritableDate:
            return "property list dates must be finite and within 2^62 seconds of 2001-01-01";
        case PlistProblem::kNone:
            break;
    }
    return {};
}

ContainerRegistry::~ContainerRegistry() { std::free(slots_); }

ContainerRegistry::Slot* ContainerRegistry::find(CFTypeRef container) {
    size_t mask = capacity_ - 1;
    for (size_t i = slotHash(container) & mask;; i = (i + 1) & mask) {
        if (slots_[i].container == container || slots_[i].container == nullptr) return &slots_[i];
    }
}

bool ContainerRegistry::grow() {
    size_t capacity = capacity_ == 0 ? 64 : capacity_ * 2;
    auto* slots = static_cast<Slot*>(std::calloc(capacity, sizeof(Slot)));
    if (slots == nullptr) return false;
    Slot* old = slots_;
    size_t oldCapacity = capacity_;
    slots_ = slots;
    capacity_ = capacity;
    for (size_t i = 0; i < oldCapacity; ++i) {
        if (old[i].container != nullptr) *find(old[i].container) = old[i];
    }
    std::free(old);
    return true;
}

PlistProblem ContainerRegistry::enter(CFTypeRef container, bool limitReferences) {
    // At most half full, so that every probe run ends at an empty slot.
    if ((used_ + 1) * 2 > capacity_ && !grow()) {
        // Without memory for the bookkeeping the walk cannot prove the list
        // finite: refuse it rather than risk endless output.
        return PlistProblem::kRecursive;
    }
    Slot* slot = find(container);
    if (slot->container == nullptr) {
        *slot = Slot{container, 0, false};
        ++used_;
    }
    if (slot->open) return PlistProblem::kRecursive;
    if (++slot->references > kPropertyListMaxReferences && limitReferences) return PlistProblem::kTooManyReferences;
    slot->open = true;
    return PlistProblem::kNone;
}

void ContainerRegistry::leave(CFTypeRef container) {
    if (capacity_ == 0) return;
    Slot* slot = find(container);
    if (slot->container == container) slot->open = false;
}

}  // namespace halvane::detail
