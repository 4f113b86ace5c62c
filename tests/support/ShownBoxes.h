#pragma once

#include "ImportPatch.h"

#include <string>
#include <vector>

/// Answers the library's message boxes with OK without showing them, and keeps "title: text" of each, while the object
/// exists.
struct ShownBoxes {
    std::vector<std::wstring> texts;

private:
    ImportPatch m_patch{"MessageBoxW", &MessageBoxW, [this](HWND, LPCWSTR text, LPCWSTR title, UINT) {
                            return texts.push_back(std::wstring(title) + L": " + text), IDOK;
                        }};
};
