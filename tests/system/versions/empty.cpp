/// A library that is looked at and never loaded must still offer something.
extern "C" __declspec(dllexport) int Nothing() {
    return 0;
}
