// BRENQUIL_IS_SANITIZED: a build with AddressSanitizer or ThreadSanitizer, of GCC or Clang.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define BRENQUIL_IS_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define BRENQUIL_IS_SANITIZED
#endif
