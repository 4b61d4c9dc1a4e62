// The walk over a property list that checking, writing and deep copying
// share: it checks every object against the rules of a format as it goes,
// and hands the objects to a visitor in document order.
//
// The walk keeps its own stack on the heap, so the depth of the input never
// bounds it; a container is refused when it contains itself, and, for the
// text formats, when it is reached too often or nested too deeply.
#ifndef HALVANE_CF_PROPERTY_LIST_TRAVERSAL_H
#define HALVANE_CF_PROPERTY_LIST_TRAVERSAL_H

#include "CFInternal.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <string>
#include <vector>

namespace halvane::detail {

// Arrays and dictionaries nested deeper than this are refused, by the
// reader and by the text formats of the writer.
inline constexpr size_t kPropertyListMaxNesting = 512;
// The text formats write a container once per reference: one reached more
// often than this is refused.
inline constexpr uint32_t kPropertyListMaxReferences = 1536;

enum class PlistKind : uint8_t { kString, kData, kNumber, kBoolean, kDate, kArray, kDictionary, kOther };

inline PlistKind plistKindOf(CFTypeRef cf) {
    switch (typeIDOf(cf)) {
        case kCFStringTypeID:
            return PlistKind::kString;
        case kCFDataTypeID:
            return PlistKind::kData;
        case kCFNumberTypeID:
            return PlistKind::kNumber;
        case kCFBooleanTypeID:
            return PlistKind::kBoolean;
        case kCFDateTypeID:
            return PlistKind::kDate;
        case kCFArrayTypeID:
            return PlistKind::kArray;
        case kCFDictionaryTypeID:
            return PlistKind::kDictionary;
        default:
            return PlistKind::kOther;
    }
}

enum class PlistProblem : uint8_t {
    kNone,
    kInvalidType,     // type: the offending object's type ID
    kNonStringKey,    // type: the key's type ID
    kNullInArray,
    kNullKey,
    kNullValue,
    kRecursive,
    kTooManyReferences,  // also nesting beyond kPropertyListMaxNesting
    kUnwritableDate,     // refused by the XML writer: no calendar date for the time
};

struct PlistIssue {
    PlistProblem problem = PlistProblem::kNone;
    CFTypeID type = 0;

    explicit operator bool() const { return problem != PlistProblem::kNone; }
};

// The reason the writer gives in its error, e.g. "property lists cannot
// contain objects of type 'CFNull'".
std::string plistIssueText(const PlistIssue& issue);

struct TraversalRules {
    bool openStepTypesOnly = false;  // strings, data, arrays and dictionaries only
    bool limitReferences = false;    // text formats: kPropertyListMaxReferences and kPropertyListMaxNesting
    bool sortKeys = false;           // dictionaries in key order (CFStringCompare without options)
};

// Which non-empty containers the walk has reached, how often, and which
// ones are open on the current path. Open addressing on the pointer.
class ContainerRegistry {
public:
    ContainerRegistry() = default;
    ContainerRegistry(const ContainerRegistry&) = delete;
    ContainerRegistry& operator=(const ContainerRegistry&) = delete;
    ~ContainerRegistry();

    // Records one more reference to container and opens it; kRecursive
    // when it is already open, kTooManyReferences past the limit.
    PlistProblem enter(CFTypeRef container, bool limitReferences);
    void leave(CFTypeRef container);

private:
    struct Slot {
        CFTypeRef container;
        uint32_t references;
        bool open;
    };
    Slot* find(CFTypeRef container);  // the slot of container, or the empty slot where it goes
    bool grow();

    Slot* slots_ = nullptr;
    size_t capacity_ = 0;  // a power of two, or 0
    size_t used_ = 0;
};

// Walks plist, checking it against rules, and calls the visitor:
//   bool leaf(CFTypeRef object, PlistKind kind, size_t depth)   (false stops the walk: kUnwritableDate)
//   void beginContainer(CFTypeRef container, PlistKind kind, CFIndex count, size_t depth)
//   void key(CFStringRef key, size_t depth)                       (before each dictionary value)
//   void endContainer(CFTypeRef container, PlistKind kind, CFIndex count, size_t depth)
// depth is 0 for the top object, one more for each container around it.
// Returns the first problem found; the visitor has then seen part of the
// list only.
template <typename Visitor>
PlistIssue traversePropertyList(CFPropertyListRef plist, const TraversalRules& rules, Visitor& visitor) {
    struct Pair {
        const void* key;
        const void* value;
    };
    struct Frame {
        CFTypeRef container;
        PlistKind kind;
        size_t first;  // of its elements in values or pairs
        CFIndex count;
        CFIndex next;
        size_t depth;
    };
    std::vector<const void*> values;  // array elements of the open arrays
    std::vector<Pair> pairs;          // entries of the open dictionaries
    std::vector<Frame> frames;
    ContainerRegistry registry;

    auto visit = [&](CFTypeRef object, size_t depth) -> PlistIssue {
        PlistKind kind = plistKindOf(object);
        if (kind == PlistKind::kOther ||
            (rules.openStepTypesOnly && kind != PlistKind::kString && kind != PlistKind::kData &&
             kind != PlistKind::kArray && kind != PlistKind::kDictionary)) {
            return {PlistProblem::kInvalidType, typeIDOf(object)};
        }
        if (kind != PlistKind::kArray && kind != PlistKind::kDictionary) {
            if (!visitor.leaf(object, kind, depth)) return {PlistProblem::kUnwritableDate, 0};
            return {};
        }
        if (rules.limitReferences && frames.size() >= kPropertyListMaxNesting) return {PlistProblem::kTooManyReferences, 0};
        bool isArray = kind == PlistKind::kArray;
        CFIndex count = isArray ? CFArrayGetCount(static_cast<CFArrayRef>(object))
                                : CFDictionaryGetCount(static_cast<CFDictionaryRef>(object));
        if (count == 0) {
            visitor.beginContainer(object, kind, 0, depth);
            visitor.endContainer(object, kind, 0, depth);
            return {};
        }
        if (PlistProblem problem = registry.enter(object, rules.limitReferences); problem != PlistProblem::kNone) {
            return {problem, 0};
        }
        size_t first;
        if (isArray) {
            first = values.size();
            values.resize(first + size_t(count));
            CFArrayGetValues(static_cast<CFArrayRef>(object), CFRangeMake(0, count), values.data() + first);
        } else {
            first = pairs.size();
            CFDictionaryApplyFunction(
                static_cast<CFDictionaryRef>(object),
                [](const void* key, const void* value, void* context) {
                    static_cast<std::vector<Pair>*>(context)->push_back(Pair{key, value});
                },
                &pairs);
            count = CFIndex(pairs.size() - first);
            for (size_t i = first; i < pairs.size(); ++i) {
                if (pairs[i].key == nullptr) return {PlistProblem::kNullKey, 0};
                if (typeIDOf(pairs[i].key) != kCFStringTypeID) {
                    return {PlistProblem::kNonStringKey, typeIDOf(pairs[i].key)};
                }
            }
            if (rules.sortKeys) {
                std::sort(pairs.begin() + ptrdiff_t(first), pairs.end(), [](const Pair& a, const Pair& b) {
                    return CFStringCompare(static_cast<CFStringRef>(a.key), static_cast<CFStringRef>(b.key), 0) ==
                           kCFCompareLessThan;
                });
            }
        }
        visitor.beginContainer(object, kind, count, depth);
        frames.push_back(Frame{object, kind, first, count, 0, depth});
        return {};
    };

    if (plist == nullptr) return {PlistProblem::kNullValue, 0};
    if (PlistIssue issue = visit(plist, 0)) return issue;
    while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.next == frame.count) {
            Frame done = frame;
            frames.pop_back();
            registry.leave(done.container);
            if (done.kind == PlistKind::kArray) {
                values.resize(done.first);
            } else {
                pairs.resize(done.first);
            }
            visitor.endContainer(done.container, done.kind, done.count, done.depth);
            continue;
        }
        size_t index = frame.first + size_t(frame.next++);
        size_t depth = frame.depth + 1;
        const void* element;
        if (frame.kind == PlistKind::kArray) {
            element = values[index];
            if (element == nullptr) return {PlistProblem::kNullInArray, 0};
        } else {
            element = pairs[index].value;
            visitor.key(static_cast<CFStringRef>(pairs[index].key), depth);
            if (element == nullptr) return {PlistProblem::kNullValue, 0};
        }
        // visit may grow frames: frame is not used after this point.
        if (PlistIssue issue = visit(element, depth)) return issue;
    }
    return {};
}

}  // namespace halvane::detail

#endif  // HALVANE_CF_PROPERTY_LIST_TRAVERSAL_H
