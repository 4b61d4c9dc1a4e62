// The built-in allocators. Objects are always allocated from the C heap; the
// allocator argument of a creation function matters only for
// kCFAllocatorNull, which makes creation fail and deallocation a no-op.
#include "CFInternal.h"
#include "CFStringInternal.h"

struct __CFAllocator {
    CFRuntimeBase base;
    const char* name;
    bool allocates;
};

namespace halvane::detail {

namespace {

CFStringRef copyAllocatorDescription(CFTypeRef cf) {
    auto* allocator = static_cast<const __CFAllocator*>(cf);
    return TextBuilder()
        .ascii("<CFAllocator ")
        .pointer(cf)
        .ascii(" [")
        .pointer(kCFAllocatorSystemDefault)
        .ascii("]>{")
        .ascii(allocator->name)
        .ascii("}")
        .create();
}

constinit __CFAllocator systemDefaultAllocator = {immortalHeader(kCFAllocatorTypeID), "default", true};
constinit __CFAllocator mallocAllocator = {immortalHeader(kCFAllocatorTypeID), "malloc", true};
constinit __CFAllocator nullAllocator = {immortalHeader(kCFAllocatorTypeID), "null", false};

bool allocates(CFAllocatorRef allocator) {
    return allocator == nullptr || allocator->allocates;
}

}  // namespace

constinit const CFRuntimeClass kAllocatorClass = {
    0, "CFAllocator", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, copyAllocatorDescription, nullptr,
    nullptr, 0};

}  // namespace halvane::detail

using namespace halvane::detail;

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorSystemDefault = &systemDefaultAllocator;
const CFAllocatorRef kCFAllocatorMalloc = &mallocAllocator;
const CFAllocatorRef kCFAllocatorNull = &nullAllocator;

CFTypeID CFAllocatorGetTypeID(void) { return kCFAllocatorTypeID; }

CFAllocatorRef CFAllocatorGetDefault(void) { return kCFAllocatorSystemDefault; }

void* CFAllocatorAllocate(CFAllocatorRef allocator, CFIndex size, CFOptionFlags) {
    if (size <= 0 || !allocates(allocator)) return nullptr;
    return std::malloc(size_t(size));
}

void* CFAllocatorReallocate(CFAllocatorRef allocator, void* ptr, CFIndex newsize, CFOptionFlags) {
    if (!allocates(allocator)) return nullptr;
    if (ptr == nullptr) return newsize > 0 ? std::malloc(size_t(newsize)) : nullptr;
    if (newsize <= 0) {
        std::free(ptr);
        return nullptr;
    }
    return std::realloc(ptr, size_t(newsize));
}

void CFAllocatorDeallocate(CFAllocatorRef allocator, void* ptr) {
    if (allocates(allocator)) std::free(ptr);
}
