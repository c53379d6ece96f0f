// Under the address sanitizer an allocation that is too large gives null, as it does without, so
// that running out of memory can be tested. Without the sanitizer nobody calls this.
extern "C" {
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the sanitizer's
__attribute__((visibility("default"))) const char* __asan_default_options();
// NOLINTNEXTLINE(bugprone-reserved-identifier)
const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
}
