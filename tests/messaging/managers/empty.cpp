/// A module that is not a manager.
extern "C" __declspec(dllexport) int Nothing() {
    return 0;
}
