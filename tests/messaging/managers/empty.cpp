/// A module that is no manager.
extern "C" __declspec(dllexport) int Nothing() {
    return 0;
}
