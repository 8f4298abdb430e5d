// The Windows platform layer, run by wine: a plain program that prints each failed check and ends with status
// 1 if there was one. It works in the current directory, which is empty. The open dialog and the message box
// are tried by windows_dialog.sh.
#include "platform/platform.h"
#include "platform/script_names.h"
#include "platform/windows_paths.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <initializer_list>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

static int failures;

#define CHECK(condition, subject)                                                                            \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            printf("%s:%d: %s: %s\n", __FILE__, __LINE__, #condition, subject);                              \
            failures++;                                                                                      \
        }                                                                                                    \
    } while (0)

static void write_file(const char *path, const char *bytes)
{
    FILE *file = fopen(path, "wb");
    CHECK(file != nullptr, path);
    fputs(bytes, file);
    fclose(file);
}

static bool file_holds(const char *path, const char *bytes)
{
    char found[64] = "";
    FILE *file = fopen(path, "rb");
    if (file == nullptr)
        return false;
    size_t size = fread(found, 1, sizeof found, file);
    fclose(file);
    return size == strlen(bytes) && memcmp(found, bytes, size) == 0;
}

// Paths of every shape; the system's own routines say what is right.
static const char *const paths[] = {
    "",           "a",
    "a.mrl",      ".mrl",
    "a.",         "a.b.mrl",
    "a b.mrl",    "x.y\\a",
    "x.y/a",      "x\\y/a.mrl",
    "x\\",        "x/",
    "\\",         "/",
    "\\a.mrl",    "\\\\server\\share\\x\\a.mrl",
    "\\\\server", "c:",
    "c:a.mrl",    "c:\\",
    "c:\\a.mrl",  "c:\\x y\\a.b.mrl",
    "c:/x/a",     "c:x\\a",
    "cc:a.mrl",   "..\\a.mrl",
    "..",         "\u00c4\u0434\\\u56fe\U0001f600.mrl",
};

static void test_path_splits()
{
    for (const char *path : paths) {
        wchar_t *wide = winpath_wide(path);
        wchar_t drive[_MAX_DRIVE];
        wchar_t folder[_MAX_DIR];
        wchar_t base[_MAX_FNAME];
        wchar_t extension[_MAX_EXT];
        _wsplitpath(wide, drive, folder, base, extension);
        wchar_t *tail = winpath_wide(path + winpath_base_start(path));
        CHECK(wcslen(wide) - wcslen(tail) == wcslen(drive) + wcslen(folder), path);
        free(tail);
        tail = winpath_wide(path + plat_extension_start(path));
        CHECK(wcscmp(tail, extension) == 0, path);
        free(tail);
        free(wide);
    }
    static char long_path[100000];
    memset(long_path, 'n', sizeof long_path - 1);
    memcpy(long_path + 50000, "\\x.mrl", 6);
    CHECK(plat_extension_start(long_path) == 50002, "long path");
    CHECK(name_kind_of("nowhere\\A_CONV.MRL") == NAME_LONE, "an output in capitals");
    CHECK(name_kind_of("nowhere\\A.MRL") == NAME_SCRIPT, "a script in capitals");
}

// Both forms of a path, and what has only one.
static void test_conversions()
{
    const wchar_t halves[] = L"a\xd83d.\xde00\xd83d\xde00\xd83d";
    char *path = winpath_narrow(L"\xd83d\\", 2, halves);
    CHECK(strcmp(path, "?\\a?.?\U0001f600?") == 0, "half pairs");
    free(path);
    wchar_t *wide = winpath_wide("\u00e9\u6587\U0001f600");
    CHECK(wcscmp(wide, L"\u00e9\u6587\xd83d\xde00") == 0, "UTF-8");
    free(wide);
    for (const char *bytes : {"\xe9.mrl", "\xed\xa0\xbd", "\xc0\xaf", "\xf0\x9f\x98"})
        CHECK(winpath_wide(bytes) == nullptr, bytes);
}

// Collects paths, each in brackets.
struct path_list {
    char *text;
    size_t used;
    int count;
};

static void add_path(const char *path, void *context)
{
    path_list *list = static_cast<path_list *>(context);
    list->used += static_cast<size_t>(sprintf(list->text + list->used, "[%s]", path));
    list->count++;
}

static void test_selections()
{
    static struct {
        wchar_t selection[48];
        const char *taken;
        int result;
    } cases[] = {
        {L"", "", -1},
        {L"C:\\x\\a b.mrl\0", "[C:\\x\\a b.mrl]", 0},
        {L"C:\\x\0a.mrl\0", "[C:\\x\\a.mrl]", 0},
        {L"C:\\x y\0b.mrl\0a.mrp\0c\0", "[C:\\x y\\b.mrl][C:\\x y\\a.mrp][C:\\x y\\c]", 0},
        {L"C:\\\0b.mrl\0a.mrp\0", "[C:\\b.mrl][C:\\a.mrp]", 0},
        {L"\\\\server\\share\0b.mrl\0a.mrp\0", "[\\\\server\\share\\b.mrl][\\\\server\\share\\a.mrp]", 0},
        {L"C:\\x\0b.mrl\0D:\\y\\a.mrp\0\\\\z\\q\0a\0", "[C:\\x\\b.mrl][D:\\y\\a.mrp][\\\\z\\q][C:\\x\\a]", 0},
    };
    for (auto &row : cases) {
        char text[256] = "";
        path_list list = {text, 0, 0};
        CHECK(winpath_walk_selection(row.selection, add_path, &list) == row.result, row.taken);
        CHECK(strcmp(text, row.taken) == 0, row.taken);
    }
}

// As many names as a user may select in one folder, each as long as a name can be.
static void test_large_selection()
{
    const int count = 3000;
    const size_t length = 255;
    auto *selection = static_cast<wchar_t *>(calloc(count + 1, (length + 1) * sizeof(wchar_t)));
    char *text = static_cast<char *>(calloc(count, length + 10));
    wcscpy(selection, L"C:\\cad");
    wchar_t *name = selection + 7;
    for (int i = 0; i < count; i++) {
        wmemset(name, L'n', length);
        wchar_t *digit = name + length - 4;
        for (int place = 0, rest = i; place < 5; place++, rest /= 10)
            *--digit = static_cast<wchar_t>(L'0' + rest % 10);
        wmemcpy(name + length - 4, L".mrl", 4);
        name += length + 1;
    }
    path_list list = {text, 0, 0};
    CHECK(winpath_walk_selection(selection, add_path, &list) == 0, "3000 names");
    CHECK(list.count == count, "3000 names");
    CHECK(strstr(text, "n00000.mrl][C:\\cad\\nnn") != nullptr, "3000 names");
    CHECK(strcmp(text + list.used - 11, "n02999.mrl]") == 0, "3000 names");
    free(text);
    free(selection);
}

static void test_input()
{
    write_file("a.mrl",
               "A\r\nB\x1a"
               "C");
    plat_file input;
    CHECK(plat_open_input("a.mrl", &input) == 0, "binary input");
    char bytes[16];
    CHECK(plat_read(&input, bytes, sizeof bytes) == 6, "binary input");
    CHECK(memcmp(bytes,
                 "A\r\nB\x1a"
                 "C",
                 6) == 0,
          "binary input");
    CHECK(plat_read(&input, bytes, 1) == 0, "the end of an input");
    plat_close(&input);

    static char long_path[100000];
    memset(long_path, 'n', sizeof long_path - 1);
    const char *const refused[] = {"missing.mrl",    "folder", "folder\\", "",
                                   "missing\\a.mrl", "?",      "\xe9.mrl", long_path};
    CreateDirectoryA("folder", nullptr);
    for (const char *path : refused)
        CHECK(plat_open_input(path, &input) != 0, path);
}

static void test_output()
{
    write_file("a.mrl", "precious");
    write_file("a_conv.mrl", "a long old output");
    plat_file input;
    plat_file output;
    CHECK(plat_open_input("a.mrl", &input) == 0, "input");
    CHECK(plat_open_output("a_conv.mrl", &input, &output) == 0, "output");
    plat_write(&output, "new\n\n", 5);
    plat_close(&output);
    CHECK(file_holds("a_conv.mrl", "new\r\n\r\n"), "output");
    CHECK(plat_open_output("NUL", &input, &output) == 0, "device");
    plat_close(&output);

    static char long_path[100000];
    memset(long_path, 'n', sizeof long_path - 1);
    CHECK(CreateHardLinkA("link_conv.mrl", "a.mrl", nullptr), "link");
    const char *const refused[] = {"a.mrl",  "A.MRL", "folder\\..\\a.mrl",   "link_conv.mrl",
                                   "folder", "",      "missing\\a_conv.mrl", long_path};
    // Many times, as a leak shows when the files run out.
    for (int i = 0; i < 600; i++) {
        for (const char *path : refused)
            CHECK(plat_open_output(path, &input, &output) != 0, path);
    }
    CHECK(file_holds("a.mrl", "precious"), "input");
    plat_close(&input);
}

static void test_escape_poll()
{
    MSG message;
    DWORD thread = GetCurrentThreadId();
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE); // a thread gets its queue with its first look
    CHECK(plat_poll_escape() == -1, "no message");
    PostThreadMessageA(thread, WM_KEYUP, VK_ESCAPE, 0);
    PostThreadMessageA(thread, WM_CHAR, VK_ESCAPE, 0);
    PostThreadMessageA(thread, WM_SYSKEYDOWN, VK_ESCAPE, 0);
    CHECK(plat_poll_escape() == -1, "other messages");
    PostThreadMessageA(thread, WM_KEYDOWN, VK_ESCAPE, 0);
    CHECK(plat_poll_escape() == 27, "Escape");
    CHECK(plat_poll_escape() == 27, "Escape stays");
    CHECK(PeekMessageA(&message, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE), "Escape is there");
    PostThreadMessageA(thread, WM_KEYDOWN, VK_RETURN, 0);
    CHECK(plat_poll_escape() == -1, "other key");
}

// With arguments it prints what plat_start makes of them.
int main(int argc, char **argv)
{
    CHECK(plat_start(&argc, &argv) == 0, "start");
    if (argc > 1) {
        for (int i = 1; i < argc; i++)
            printf("[%s]", argv[i]);
        return 0;
    }
    test_path_splits();
    test_conversions();
    test_selections();
    test_large_selection();
    test_input();
    test_output();
    test_escape_poll();
    printf("windows platform: %d checks failed\n", failures);
    return failures == 0 ? 0 : 1;
}
