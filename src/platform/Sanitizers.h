// Which sanitizers this translation unit is built with, whatever the
// compiler: GCC defines __SANITIZE_ADDRESS__ / __SANITIZE_THREAD__, clang
// answers __has_feature. OB_ASAN and OB_TSAN are 1 or 0.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OB_ASAN 1
#endif
#if __has_feature(thread_sanitizer)
#define OB_TSAN 1
#endif
#endif

#if !defined(OB_ASAN) && defined(__SANITIZE_ADDRESS__)
#define OB_ASAN 1
#endif
#if !defined(OB_TSAN) && defined(__SANITIZE_THREAD__)
#define OB_TSAN 1
#endif

#ifndef OB_ASAN
#define OB_ASAN 0
#endif
#ifndef OB_TSAN
#define OB_TSAN 0
#endif
