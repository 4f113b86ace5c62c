#include <tessel/ui/cursor.h>

int CCURSOR::SetCursorPos(int x, int y) {
    return ::SetCursorPos(x, y);
}
