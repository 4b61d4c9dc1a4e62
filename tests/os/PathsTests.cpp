// Well-known places: the user's home directory.
#include <halvane/os/Paths.h>

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

using namespace halvane::os;

namespace {

// Sets HOME (nullptr: unsets it) for the life of the object.
class ScopedHome {
public:
    explicit ScopedHome(const char* value) {
        if (const char* old = std::getenv("HOME")) saved_ = old;
        if (value != nullptr) {
            setenv("HOME", value, 1);
        } else {
            unsetenv("HOME");
        }
    }
    ~ScopedHome() {
        if (saved_) {
            setenv("HOME", saved_->c_str(), 1);
        } else {
            unsetenv("HOME");
        }
    }

private:
    std::optional<std::string> saved_;
};

}  // namespace

TEST(Paths, HomeDirectoryComesFromTheEnvironment) {
    ScopedHome home("/home/someone/");
    EXPECT_EQ(HomeDirectoryPath(), "/home/someone");
    ScopedHome root("/");
    EXPECT_EQ(HomeDirectoryPath(), "/");
}

TEST(Paths, WithoutHomeTheUserDatabaseAnswers) {
    ScopedHome unset(nullptr);
    const passwd* entry = getpwuid(getuid());
    if (entry == nullptr) GTEST_SKIP() << "no user database entry for this user";
    std::string expected = entry->pw_dir;
    while (expected.size() > 1 && expected.back() == '/') expected.pop_back();
    EXPECT_EQ(HomeDirectoryPath(), expected);
    ScopedHome empty("");
    EXPECT_EQ(HomeDirectoryPath(), expected);
}
