#pragma once

/// TKOSQLLITE_ADDRESS_SANITIZER: 1 in a build with the address sanitizer, which has a separate allocator and reserves
/// most of the address space; 0 otherwise.
#if defined(__SANITIZE_ADDRESS__)
#define TKOSQLLITE_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TKOSQLLITE_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef TKOSQLLITE_ADDRESS_SANITIZER
#define TKOSQLLITE_ADDRESS_SANITIZER 0
#endif
