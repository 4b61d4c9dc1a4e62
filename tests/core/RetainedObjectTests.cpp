// Retained objects: the container's runtime class, counting through Retain
// and Release, deletion by the last release, and the callbacks that let
// collections compare, hash and describe the owning object.
#include <halvane/core/HVRetainedObject.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

// Records its own destruction in a flag that outlives it.
class Tracked : public HVRetainedObject {
public:
    explicit Tracked(bool* destroyed) : destroyed_(destroyed) {}
    ~Tracked() override { *destroyed_ = true; }
    void SubclassSlot() override {}
    void RecordDestructionIn(bool* destroyed) { destroyed_ = destroyed; }
    using HVRetainedObject::CreateContainer;

private:
    bool* destroyed_;
};

// Equal by a key, hashed by it.
class Keyed : public HVRetainedObject {
public:
    explicit Keyed(int key) : key_(key) {}
    void SubclassSlot() override {}
    bool IsEqual(const HVRetainedObject* other) const override {
        auto keyed = dynamic_cast<const Keyed*>(other);
        return keyed != nullptr && keyed->key_ == key_;
    }
    unsigned long long Hash() const override { return 1000u + unsigned(key_); }

private:
    int key_;
};

// Neither equality nor hashing of its own.
class Plain : public HVRetainedObject {
public:
    void SubclassSlot() override {}
};

std::string pointerText(const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", pointer);
    return text;
}

}  // namespace

TEST(RetainedObject, RuntimeClassIsTheFirstClientClass) {
    Plain* object = new Plain;
    const void* container = *object;
    ASSERT_NE(container, nullptr);
    EXPECT_EQ(CFGetTypeID(container), CFTypeID(256));
    CFStringRef name = CFCopyTypeIDDescription(256);
    EXPECT_EQ(std::string(HVString(name)), "HVRetainedObject");
    CFRelease(name);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(container), HVRetainedObjectClassType);
    EXPECT_EQ(object->ObjectsClassType(), HVRetainedObjectClassType);
    EXPECT_EQ(object->ObjectsActualClassType(), HVRetainedObjectClassType);
    EXPECT_EQ(HVRetainedObject::ClassType(), HVRetainedObjectClassType);
    EXPECT_EQ(HVRetainedObject::SharedEmptyObject(), nullptr);
    EXPECT_EQ(HVRetainedObject::Release(object), nullptr);
}

TEST(RetainedObject, CountsThroughRetainAndRelease) {
    bool destroyed = false;
    Tracked* object = new Tracked(&destroyed);
    const void* container = object->Ref();
    EXPECT_EQ(object->RetainCount(), 1u);
    EXPECT_EQ(HVRetainedObject::RetainedObject(container), object);

    EXPECT_EQ(HVRetainedObject::Retain(object), object);
    EXPECT_EQ(object->RetainCount(), 2u);

    HVRetainedObject* same = object;
    EXPECT_EQ(HVRetainedObject::Release(same), nullptr);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(object->RetainCount(), 1u);
    EXPECT_EQ(object->Ref(), container);

    HVRetainedObject* last = object;
    last = HVRetainedObject::Release(last);
    EXPECT_EQ(last, nullptr);
    EXPECT_TRUE(destroyed);
}

TEST(RetainedObject, NullArgumentsAreIgnored) {
    EXPECT_EQ(HVRetainedObject::Retain(nullptr), nullptr);
    EXPECT_EQ(HVRetainedObject::Release(nullptr), nullptr);
    EXPECT_EQ(HVRetainedObject::RetainedObject(nullptr), nullptr);
    EXPECT_EQ(HVRetainedObject::RetainedObject(CFSTR("not a container")), nullptr);
}

TEST(RetainedObject, ACollectionKeepsTheObjectAlive) {
    bool destroyed = false;
    Tracked* object = new Tracked(&destroyed);
    const void* container = *object;
    CFArrayRef array = CFArrayCreate(kCFAllocatorDefault, &container, 1, &kCFTypeArrayCallBacks);
    EXPECT_EQ(object->RetainCount(), 2u);
    HVRetainedObject::Release(object);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(HVRetainedObject::RetainedObject(CFArrayGetValueAtIndex(array, 0)), object);
    // The array's release is the last: the container's finalize deletes it.
    CFRelease(array);
    EXPECT_TRUE(destroyed);
}

TEST(RetainedObject, DescriptionNamesObjectContainerAndCount) {
    Plain* object = new Plain;
    const void* container = object->Ref();
    std::string expected =
        "<HVRetainedObject " + pointerText(object) + " [m_Ref = " + pointerText(container) + " retainCount = 1>";
    EXPECT_EQ(std::string(object->Description()), expected);
    HVRetainedObject::Retain(object);
    EXPECT_EQ(std::string(object->Description()),
              "<HVRetainedObject " + pointerText(object) + " [m_Ref = " + pointerText(container) + " retainCount = 2>");
    // The platform describes the container by its owner.
    CFStringRef described = CFCopyDescription(container);
    EXPECT_EQ(std::string(HVString(described)), std::string(object->Description()));
    CFRelease(described);
    CFStringRef formatted = CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("[%@]"), container);
    EXPECT_EQ(std::string(HVString(formatted)), "[" + std::string(object->Description()) + "]");
    CFRelease(formatted);
    HVRetainedObject::Release(object);
    HVRetainedObject::Release(object);
}

TEST(RetainedObject, EqualityAndHashingGoThroughTheOwners) {
    Keyed* first = new Keyed(7);
    Keyed* second = new Keyed(7);
    Keyed* other = new Keyed(8);
    Plain* plain = new Plain;
    Plain* anotherPlain = new Plain;

    EXPECT_TRUE(CFEqual(first->Ref(), second->Ref()));
    EXPECT_FALSE(CFEqual(first->Ref(), other->Ref()));
    EXPECT_EQ(CFHash(first->Ref()), CFHashCode(1007));
    // Without an equality of their own, only the same object is equal.
    EXPECT_FALSE(CFEqual(plain->Ref(), anotherPlain->Ref()));
    EXPECT_TRUE(CFEqual(plain->Ref(), plain->Ref()));
    EXPECT_FALSE(CFEqual(plain->Ref(), first->Ref()));
    EXPECT_EQ(CFHash(plain->Ref()), CFHashCode(reinterpret_cast<uintptr_t>(static_cast<HVRetainedObject*>(plain))));
    EXPECT_TRUE(first->IsEqual(second));
    EXPECT_TRUE(plain->IsEqual(plain));
    EXPECT_FALSE(plain->IsEqual(anotherPlain));

    // Collections find an element by the owner's equality.
    const void* elements[] = {other->Ref(), first->Ref()};
    CFArrayRef array = CFArrayCreate(kCFAllocatorDefault, elements, 2, &kCFTypeArrayCallBacks);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(0, 2), second->Ref()), 1);
    CFRelease(array);

    for (HVRetainedObject* object :
         std::initializer_list<HVRetainedObject*>{first, second, other, plain, anotherPlain}) {
        HVRetainedObject::Release(object);
    }
}

TEST(RetainedObject, EmptyingAndNullifyingLeaveTheContainer) {
    Plain* object = new Plain;
    const void* container = object->Ref();
    object->Empty();
    object->Nullify();
    EXPECT_EQ(object->Ref(), container);
    EXPECT_FALSE(object->IsNull());
    EXPECT_EQ(object->RetainCount(), 1u);
    HVRetainedObject::Release(object);
}

TEST(RetainedObject, NewContainerDetachesTheOldOne) {
    bool destroyed = false;
    Tracked* object = new Tracked(&destroyed);
    const void* old = object->Ref();
    CFRetain(old);  // held elsewhere, say by a collection
    const void* replacement = Tracked::CreateContainer(object);
    ASSERT_NE(replacement, nullptr);
    EXPECT_NE(replacement, old);
    EXPECT_EQ(object->Ref(), replacement);
    EXPECT_EQ(object->RetainCount(), 1u);
    EXPECT_EQ(HVRetainedObject::RetainedObject(replacement), object);
    EXPECT_EQ(HVRetainedObject::RetainedObject(old), nullptr);
    // The old container's last release no longer deletes the object.
    CFRelease(old);
    EXPECT_FALSE(destroyed);
    HVRetainedObject::Release(object);
    EXPECT_TRUE(destroyed);
}

TEST(RetainedObject, ACopyIsAnotherObjectWithItsOwnContainer) {
    bool originalDestroyed = false;
    bool copyDestroyed = false;
    Tracked* original = new Tracked(&originalDestroyed);
    Tracked* copy = new Tracked(*original);
    EXPECT_NE(copy->Ref(), original->Ref());
    EXPECT_EQ(HVRetainedObject::RetainedObject(copy->Ref()), copy);
    EXPECT_EQ(original->RetainCount(), 1u);
    copy->RecordDestructionIn(&copyDestroyed);
    HVRetainedObject::Release(copy);
    EXPECT_TRUE(copyDestroyed);
    EXPECT_FALSE(originalDestroyed);
    HVRetainedObject::Release(original);
    EXPECT_TRUE(originalDestroyed);
}
