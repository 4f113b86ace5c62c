#pragma once

#include "Protocol.h"
#include "TestImage.h"
#include "controls.h"

#include <string>

/// The workstation's dialog: the image as it arrives, the managers, and the state of the post office.
class Screen {
public:
    /// Makes the dialog, hidden.
    explicit Screen(OSClass& host);

    /// @return the dialog; null: it could not be made
    HWND Window() { return m_controls.GetHandle(); }
    void Show() { (void)ShowAWindow(Window(), SW_SHOW); }

    /// Adds a manager to the list.
    void AddManager(int row, const wchar_t* name);
    /// Shows what a manager does.
    void ShowManager(int row, const wchar_t* state, const ManagerStatus& status);
    /// Takes a line of the image.
    void SetLine(std::uint32_t line, std::span<const std::uint8_t> pixels);
    /// Shows the lines that have arrived.
    void RefreshImage();
    /// Paints the image where the system asks for it.
    void DrawImage(const DRAWITEMSTRUCT& item) const;
    void ShowPostOffice(CMailBox& mailbox);
    void ShowImages(const std::wstring& text) { (void)m_controls.Set(IDC_IMAGES, 0, text.c_str(), 0); }

private:
    void SetColours(OSClass& host);
    void SetControlColours(const COrcaPalette& palette);

    DIALOG_INTERFACE m_controls;
    Image m_image = Image(kImageWidth * kImageHeight);
};
