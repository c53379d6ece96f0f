// Under the address sanitizer an allocation of absurd size gives null, as it may without: laying
// out the sanitizer's own map of gigabytes that nobody touches takes longer than the test.
// Without the sanitizer nobody calls this.
extern "C" {
__attribute__((visibility("default"))) const char* __asan_default_options();
const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=500";
}
}
