/// The thread sanitizer sees what the C library and shared templates do for the simulation, but not
/// how the simulation hands threads over: its own state is no race.
extern "C" const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions() {
    return "race:sim::\n";
}
