// Settings of the thread sanitizer for libraries that are not instrumented.

#if defined(__SANITIZE_THREAD__)
#define ZEB_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ZEB_THREAD_SANITIZER
#endif
#endif

#ifdef ZEB_THREAD_SANITIZER

extern "C" const char* __tsan_default_suppressions();

// The system's FFmpeg is not instrumented, so the sanitizer misses its atomic counters (buffer references,
// progress of decoding threads) and the order that they establish. All other accesses are still checked.
extern "C" const char* __tsan_default_suppressions() {
    return "race:libavcodec.so\n"
           "race:libavutil.so\n"
           "race:libavfilter.so\n"
           "race:libavformat.so\n"
           "race:libdav1d.so\n";
}

#endif
