#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// The path of a file for functions that narrow it to the system's code page before they open it, as Wine's multimedia
/// I/O and AVI files do. Where narrowing would change the name, it is the short path of the file.
class NarrowPath {
public:
    /// Finds the path. Only an existing file has a short path, so a missing one is made when it needs one.
    /// @param path  path of the file; it outlives this object
    explicit NarrowPath(const wchar_t* path);

    /// The path to open.
    /// @return path that is valid as long as this object; null: the file cannot be made, or has no such path
    const wchar_t* Get() const { return m_narrow; }

    /// Removes the file if this object made it: it could not be opened.
    void Discard() const;

private:
    const wchar_t* FindShortPath();

    const wchar_t* m_path;
    bool m_made = false;
    wchar_t m_short[MAX_PATH];
    const wchar_t* m_narrow;
};

} // namespace tessel
