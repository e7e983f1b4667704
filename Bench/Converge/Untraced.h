#pragma once

// Put before every file of a build (-include) that is to tell what traces cost when they are off:
// the statements are compiled, so that they stay valid, and never there.

#include "Platform/Dualog/Dualog.h"

#undef DUALOG_TRACE
#define DUALOG_TRACE(handle, level, ...)                                                \
  do {                                                                                  \
    if (false)                                                                          \
      ::Dualog::record((handle), (level), __LINE__, static_cast<const char*>(__func__), \
                       __VA_ARGS__);                                                    \
  } while (false)

#undef DUALOG_MESSAGE
#define DUALOG_MESSAGE(handle, sourceName, level, signature, format, ...)                       \
  do {                                                                                          \
    if (false) {                                                                                \
      static constexpr ::Zimlog::Descriptor descriptor{sourceName, __LINE__, level, signature,  \
                                                       format};                                 \
      ::Dualog::message<::Zimlog::placeholders(format)>(                                        \
          (handle), descriptor, static_cast<const char*>(__func__) __VA_OPT__(, ) __VA_ARGS__); \
    }                                                                                           \
  } while (false)
