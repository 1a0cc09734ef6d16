// SPDX-License-Identifier: MIT
// For builds under ThreadSanitizer: GLib and the testbed are not instrumented, so
// that their own locking, by futex, is invisible and everything that their
// threads hand to each other looks like a race; so does the first use, on the
// testbed's thread, of an object of ours that it was given. What our code does
// there afterwards stays under observation. The same goes for the libraries that set
// text: they have threads of their own, which look for fonts; and for the web server's,
// which takes GLib's locks.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)

extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libglib-2.0.so.0\n"
         "called_from_lib:libgobject-2.0.so.0\n"
         "called_from_lib:libgio-2.0.so.0\n"
         "called_from_lib:libsoup-3.0.so.0\n"
         "called_from_lib:libumockdev.so.0\n"
         "called_from_lib:libfontconfig.so.1\n"
         "called_from_lib:libcairo.so.2\n"
         "called_from_lib:libharfbuzz.so.0\n"
         "called_from_lib:libpango-1.0.so.0\n"
         "called_from_lib:libpangocairo-1.0.so.0\n"
         "called_from_lib:libpangoft2-1.0.so.0\n"
         "race:UsbfsHandler::OnConnected\n";
}

#endif
#endif
