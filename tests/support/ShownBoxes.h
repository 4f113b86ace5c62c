#pragma once

#include "ImportPatch.h"

#include <string>
#include <vector>

/// Answers the library's message boxes with OK, unseen, and keeps "title: text" of each, for as long as the object
/// lives.
struct ShownBoxes {
    std::vector<std::wstring> texts;

private:
    ImportPatch m_patch{"MessageBoxW", &MessageBoxW, [this](HWND, LPCWSTR text, LPCWSTR title, UINT) {
                            texts.push_back(std::wstring(title) + L": " + text);
                            return IDOK;
                        }};
};
