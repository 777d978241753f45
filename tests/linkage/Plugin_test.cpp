// The library inside a plug-in that its host opens and closes.

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

TEST(Plugin, TheLibraryStaysLoadedAfterItsPlugInIsClosed) {
    ASSERT_EQ(dlopen(SHARED_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "linked, not opened";
    void* handle = dlopen(SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    const auto* version = static_cast<const double*>(dlsym(handle, "KorvoGitServiceVersionNumber"));
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(*version, 1.0);

    ASSERT_EQ(dlclose(handle), 0);
    EXPECT_NE(dlopen(SHARED_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr)
        << "its threads would run unmapped code";
}

}  // namespace
