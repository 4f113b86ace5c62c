/// A library must export something, even if nothing calls it.
extern "C" __declspec(dllexport) int Nothing() {
    return 0;
}
