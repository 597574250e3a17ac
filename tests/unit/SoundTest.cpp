// Sounds: the sound library is loaded with the first sound, so that a run
// without sounds starts without it; what cannot be played is no failure.
#include "platform/Sound.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

bool SoundLibraryLoaded() {
    void* library = dlopen("libcanberra.so.0", RTLD_NOW | RTLD_NOLOAD);
    if (library) dlclose(library);
    return library != nullptr;
}

TEST(Sound, TheLibraryWaitsForTheFirstSound) {
    EXPECT_FALSE(SoundLibraryLoaded());
    EXPECT_FALSE(ob::platform::PlaySoundFile(""));   // nothing to play: nothing loaded
    EXPECT_FALSE(SoundLibraryLoaded());
    EXPECT_FALSE(ob::platform::PlaySoundFile("/no/such/sound.wav"));
}

}  // namespace
