// What builds with the address sanitizer must not blame on us; other builds never call these.
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer's own names

// The font library keeps what it has read of the fonts for the life of the process, and the message bus's what it needs
// for its threads.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\nleak:libdbus-1.so\n";
}

// The display's keyboard library copies texts by their length out of an answer that has no end marks; strict checks of
// texts take that for reading on behind it.
extern "C" const char* __asan_default_suppressions();
extern "C" const char* __asan_default_suppressions() {
  return "interceptor_via_lib:libxkbcommon-x11.so\n";
}
// NOLINTEND(bugprone-reserved-identifier)
