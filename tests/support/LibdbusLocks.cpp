/**
 * libdbus takes its lock for the shared connections and that of one connection in one order when a
 * connection opens and in the other when it closes or its bus goes away. It can come to harm from
 * it only if both happen at once; the thread sanitizer reports it wherever both happen. Linked into
 * programs in which that is so, and into no others: it also hides what locks taken in a callback
 * do.
 */
extern "C" const char* __tsan_default_suppressions(); // NOLINT

extern "C" __attribute__((visibility("default"))) const char*
__tsan_default_suppressions() // NOLINT
{
    return "deadlock:libdbus-1.so\n";
}
