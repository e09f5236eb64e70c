// The font library keeps what it has read of the fonts for the life of the process. That is no leak of ours, and builds
// with the address sanitizer must not fail for it. Other builds never call this.
extern "C" const char* __lsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier): the sanitizer's own name

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\n";
}
