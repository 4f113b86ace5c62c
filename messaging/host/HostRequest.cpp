#include <messaging/host/HostRequest.h>

#include <foundation/WindowOwner.h>
#include <tessel/foundation/process.h>
#include <tessel/messaging/hostrequest.h>

namespace {

using tessel::HostRequest;

/// GUARD-202: a killed process leaves its entry, and ids and handles are reused.
HWND FrameOf(unsigned long processId) {
    const HWND frame = CResource().GetResource(tessel::kFrameType, tessel::kFrameId, processId);
    return tessel::IsWindowOfProcess(frame, processId) ? frame : nullptr;
}

LRESULT SendRequest(const HostRequest& request) {
    return SendMessageW(FrameOf(GetMyProcess()), WM_COMMAND, request.command, reinterpret_cast<LPARAM>(&request));
}

} // namespace

HWND LoadResourceDialog(int dialogId, HWND parent, HINSTANCE module) {
    const HostRequest request{tessel::kCreateDialogRequest, 0, static_cast<unsigned long>(dialogId), parent,
                              reinterpret_cast<UINT_PTR>(module)};
    return reinterpret_cast<HWND>(SendRequest(request));
}

int RequestNotify(HWND hWnd, unsigned long mask) {
    return static_cast<int>(SendRequest({tessel::kNotifyRequest, 0, 0, hWnd, mask}));
}

void ShutDown(unsigned long processId) {
    // ODD-36: the window receives WM_DESTROY but is not destroyed, and its procedure ignores the message.
    const HWND frame = FrameOf(processId == 0 ? GetMyProcess() : processId);
    (void)SendMessageW(frame, WM_DESTROY, 0, 0); // has no result
}
