// Library lookup for declared functions: the names tried for a script's
// library name, finding the versioned system library, and the set that keeps
// libraries open until it is destroyed.
#include "platform/DynamicLibrary.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>
#include <vector>

namespace {

using ob::platform::CLibrarySet;
using ob::platform::FindVersionedLibrary;
using ob::platform::LibraryCandidates;
using Names = std::vector<std::string>;

const std::string kTestLibrary = std::string(OB_BUILD_DIR) + "/tests/native/libobtest.so";

TEST(DynamicLibraryTest, CandidatesFollowTheLookupOrder) {
    EXPECT_EQ(LibraryCandidates("m.dll"), (Names{"m.dll", "m", "libm.so"}));
    EXPECT_EQ(LibraryCandidates("libm.dll"), (Names{"libm.dll", "libm", "libm.so"}));
    EXPECT_EQ(LibraryCandidates("libm.so.6.dll"), (Names{"libm.so.6.dll", "libm.so.6", "libm.so"}));
    EXPECT_EQ(LibraryCandidates("libm.so.dll"), (Names{"libm.so.dll", "libm.so"}));
    // a name with a slash is a path: no "lib" prefix, no search
    EXPECT_EQ(LibraryCandidates("./dir/libx.so.dll"), (Names{"./dir/libx.so.dll", "./dir/libx.so"}));
    EXPECT_TRUE(LibraryCandidates("").empty());
    EXPECT_TRUE(LibraryCandidates(".dll").empty());
}

TEST(DynamicLibraryTest, FindsTheVersionedLibraryOfAStem) {
    std::string libm = FindVersionedLibrary("libm");
    ASSERT_FALSE(libm.empty());
    EXPECT_NE(libm.find("/libm.so."), std::string::npos) << libm;
    EXPECT_EQ(FindVersionedLibrary("libno_such_library_here"), "");
    EXPECT_EQ(FindVersionedLibrary("lib*"), "");
    EXPECT_EQ(FindVersionedLibrary("../libm"), "");
    EXPECT_EQ(FindVersionedLibrary(""), "");
}

TEST(DynamicLibraryTest, EveryNameOfTheMathsLibraryReachesIt) {
    CLibrarySet set;
    void* expected = dlsym(RTLD_DEFAULT, "cosf");
    ASSERT_NE(expected, nullptr);
    for (const char* name : {"m.dll", "libm.dll", "libm.so.6.dll", "libm.so.dll"}) {
        void* library = set.Open(name);
        ASSERT_NE(library, nullptr) << name;
        EXPECT_EQ(CLibrarySet::Symbol(library, "cosf"), expected) << name;
        EXPECT_EQ(CLibrarySet::Symbol(library, "no_such_entry_point"), nullptr);
    }
    size_t opened = set.Count();
    EXPECT_EQ(set.Open("m.dll"), set.Open("m.dll"));
    EXPECT_EQ(set.Count(), opened);   // a name opened before is not opened again
    EXPECT_EQ(set.Open("no_such_library_here.dll"), nullptr);
    EXPECT_EQ(set.Open(".dll"), nullptr);
    EXPECT_EQ(set.Count(), opened);
    EXPECT_EQ(CLibrarySet::Symbol(nullptr, "cosf"), nullptr);
}

TEST(DynamicLibraryTest, LibrariesStayOpenUntilTheSetIsDestroyed) {
    ASSERT_EQ(dlopen(kTestLibrary.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "loaded before the test";
    {
        CLibrarySet set;
        void* library = set.Open(kTestLibrary + ".dll");   // a path: tried with ".dll", then as written
        ASSERT_NE(library, nullptr);
        EXPECT_NE(CLibrarySet::Symbol(library, "ob_add"), nullptr);
        void* probe = dlopen(kTestLibrary.c_str(), RTLD_NOW | RTLD_NOLOAD);
        EXPECT_EQ(probe, library);
        if (probe) dlclose(probe);
    }
    EXPECT_EQ(dlopen(kTestLibrary.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
}

}  // namespace
