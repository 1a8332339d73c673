/// Memory that the leak check of the address sanitizer would report: the fonts, which their library keeps
/// until the process ends, and the dictionaries of a search for slates that was stopped with the last window
/// and did not end before the process, as nobody waits for it.
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer calls it by this name
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\nleak:libtesseract\n"; }
// NOLINTEND(bugprone-reserved-identifier)
