#include "tests/support/windows/pictures.h"

#include "tests/support/windows/controls.h"

#include <fstream>
#include <string>
#include <vector>

namespace vark::test {

namespace {

// A file that is not there yet; the first picture of a dialog has no further number.
std::string NameFor(HWND window)
{
    char directory[MAX_PATH] = "";
    if (GetEnvironmentVariableA("VARK_UI_PICTURES", directory, sizeof directory) == 0) return "";
    const std::string number = IsBox(window) ? "box" : std::to_string(GetWindowContextHelpId(window));
    constexpr int most = 100;
    for (int again = 1; again < most; ++again) {
        const std::string name =
            std::string(directory) + "\\" + number + (again > 1 ? "-" + std::to_string(again) : "") + ".bmp";
        if (GetFileAttributesA(name.c_str()) == INVALID_FILE_ATTRIBUTES) return name;
    }
    return "";
}

} // namespace

void TakePicture(HWND window)
{
    const std::string name = NameFor(window);
    if (name.empty()) return;
    RECT place = {};
    GetWindowRect(window, &place);
    BITMAPINFOHEADER head = {};
    head.biSize = sizeof head;
    head.biWidth = place.right - place.left;
    head.biHeight = place.bottom - place.top;
    head.biPlanes = 1;
    head.biBitCount = 24;
    // Rows are filled up to whole words.
    const size_t row = (static_cast<size_t>(head.biWidth) * 3 + 3) / 4 * 4;
    std::vector<char> pixels(row * static_cast<size_t>(head.biHeight));

    HDC const source = GetWindowDC(window);
    HDC const memory = CreateCompatibleDC(source);
    HBITMAP const bitmap = CreateCompatibleBitmap(source, head.biWidth, head.biHeight);
    HGDIOBJ const before = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, head.biWidth, head.biHeight, source, 0, 0, SRCCOPY);
    SelectObject(memory, before);
    GetDIBits(memory, bitmap, 0, static_cast<UINT>(head.biHeight), pixels.data(),
              reinterpret_cast<BITMAPINFO *>(&head), DIB_RGB_COLORS);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(window, source);

    BITMAPFILEHEADER file = {};
    file.bfType = 0x4D42; // "BM"
    file.bfOffBits = sizeof file + sizeof head;
    file.bfSize = file.bfOffBits + static_cast<DWORD>(pixels.size());
    std::ofstream stream(name, std::ios::binary);
    stream.write(reinterpret_cast<const char *>(&file), sizeof file);
    stream.write(reinterpret_cast<const char *>(&head), sizeof head);
    stream.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
}

} // namespace vark::test
