/// Memory that libraries keep until the process ends and that the leak check of the address sanitizer would
/// report: the fonts.
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer calls it by this name
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }
// NOLINTEND(bugprone-reserved-identifier)
