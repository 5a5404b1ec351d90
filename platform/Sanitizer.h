// Whether the address sanitizer watches this build: the one compiler tells by a macro, the other by a feature.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define TQX_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TQX_ADDRESS_SANITIZER 1
#endif
#endif
