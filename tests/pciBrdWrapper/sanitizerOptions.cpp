// Under the address sanitizer an allocation that is too large gives null, as it does without, so
// that running out of memory can be tested. Without the sanitizer nobody calls this.
extern "C" {
__attribute__((visibility("default"))) const char* __asan_default_options();
const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
}
