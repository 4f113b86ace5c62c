/// A library must export something, even if it is only inspected and never loaded.
extern "C" __declspec(dllexport) int Nothing() {
    return 0;
}
