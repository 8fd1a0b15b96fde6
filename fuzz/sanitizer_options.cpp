// Inputs are many and small: what is kept about freed memory and for stacks of allocations only has
// to last for one of them.
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=1:max_malloc_fill_size=64:malloc_context_size=8";
}
