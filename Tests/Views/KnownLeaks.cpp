/// What libraries keep until the process ends, and the leak check of the address sanitizer reports: the
/// fonts.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }
