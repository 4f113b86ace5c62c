#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// A path for functions that narrow it to the system's code page before they open the file, such as Wine's multimedia
/// I/O and AVI functions. If narrowing would change the path, this is the short path of the file.
class NarrowPath {
public:
    /// Finds the path. Only an existing file has a short path, so a missing file that needs one is created.
    /// @param path  path of the file; must outlive this object
    explicit NarrowPath(const wchar_t* path);

    /// Returns the path to open.
    /// @return path owned by this object; null: the file cannot be created, or has no such path
    const wchar_t* Get() const { return m_narrow; }

    /// Removes the file if this object created it. For a file that could not be opened.
    void Discard() const;

private:
    const wchar_t* FindShortPath();

    const wchar_t* m_path;
    bool m_created = false;
    wchar_t m_short[MAX_PATH];
    const wchar_t* m_narrow;
};

} // namespace tessel
