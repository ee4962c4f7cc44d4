#pragma once

/// Marks what the shared library exports; everything else is hidden.
#if defined(_WIN32)
#ifdef kvx_zelvo_EXPORTS
#define KVX_ZELVO_API __declspec(dllexport)
#else
#define KVX_ZELVO_API __declspec(dllimport)
#endif
#else
#define KVX_ZELVO_API __attribute__((visibility("default")))
#endif
