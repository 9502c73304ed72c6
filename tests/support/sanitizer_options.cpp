// The sanitizers' options, built into the binaries of the sanitizer tree, so
// that a test or a host run by hand reports as the test script's run does:
// leaks on, every undefined behaviour fatal, and only the suppressions of
// KAVELIN_LSAN_SUPPRESSIONS (tests/lsan.supp for the hosts the library runs
// in: the runtime's named start-up allocations).
//
// Allocations are recorded with the full unwinder: GCC's runtime and GNUstep
// are built without frame pointers, so the fast one stops at their first
// frame, and a leak of a Foundation object made by our code would look the
// same as the runtime's own tables. The suppressions need the frames below.
//
// A size no allocator can give answers NULL, as glibc's malloc does, rather
// than ending the process: GNUstep's XML parser asks for SIZE_MAX bytes on
// some malformed property lists and copes with the NULL (the file then reads
// as corrupt), as it does on the plain build.
extern "C" {

__attribute__((visibility("default"))) const char* __asan_default_options() {
  return "detect_leaks=1:abort_on_error=0:detect_odr_violation=0:fast_unwind_on_malloc=0:"
         "allocator_may_return_null=1";
}

__attribute__((visibility("default"))) const char* __lsan_default_options() {
  return "suppressions=" KAVELIN_LSAN_SUPPRESSIONS ":print_suppressions=0";
}

__attribute__((visibility("default"))) const char* __ubsan_default_options() {
  return "print_stacktrace=1:halt_on_error=1";
}

}  // extern "C"
