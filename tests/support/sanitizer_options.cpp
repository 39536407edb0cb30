// The address sanitizer calls this at start-up, if it is there. An allocation that is too large then fails as
// it does without the sanitizer, instead of ending the test.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer's name
extern "C" const char* __asan_default_options();
// NOLINTNEXTLINE(bugprone-reserved-identifier)
const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
