// Read by the leak checker when a program is built with it: what libraries keep until the process ends.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    // The driver manager keeps the error records of a connection that was never made.
    return "leak:libodbc.so\n";
}
