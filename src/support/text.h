// Text: the character classes of the language and the comparisons without regard to case.
//
// Characters are bytes. Only ASCII has classes: a byte of 128 or above is no letter, no white
// space and nothing printable. Nothing here depends on the locale, and no state is kept.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

// The classes of one byte; a byte can have several.
enum : uint8_t {
    CHAR_WHITE = 1,  // blank, tab, line feed, vertical tab, form feed, CR
    CHAR_LETTER = 2, // A to Z, a to z
    CHAR_DIGIT = 4,  // 0 to 9
    CHAR_WORD = 8,   // letter, digit, underscore
    CHAR_GRAPH = 16, // printable ASCII, the blank excepted
    CHAR_OCTAL = 32, // 0 to 7
    CHAR_HEX = 64,   // 0 to 9, A to F, a to f
    CHAR_NAME = 128  // what a name of an expression may begin with: letter, $, @
};

struct char_class_map {
    uint8_t bits[256];
};

constexpr char_class_map char_classes_make()
{
    char_class_map map{};
    for (int c = 0; c < 256; c++) {
        unsigned bits = 0;
        if (c == ' ' || (c >= '\t' && c <= '\r'))
            bits |= CHAR_WHITE;
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))
            bits |= CHAR_LETTER | CHAR_WORD | CHAR_NAME;
        if (c == '$' || c == '@')
            bits |= CHAR_NAME;
        if (c >= '0' && c <= '9')
            bits |= CHAR_DIGIT | CHAR_WORD | CHAR_HEX;
        if (c >= '0' && c <= '7')
            bits |= CHAR_OCTAL;
        if (c == '_')
            bits |= CHAR_WORD;
        if ((c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'))
            bits |= CHAR_HEX;
        if (c > ' ' && c < 127)
            bits |= CHAR_GRAPH;
        map.bits[c] = static_cast<uint8_t>(bits);
    }
    return map;
}

inline constexpr char_class_map char_classes = char_classes_make();

// True if c, a character from 0 to 255, has one of the classes. -1, the end of a source, has none.
constexpr bool char_is(int c, unsigned classes)
{
    return c >= 0 && (char_classes.bits[c & 0xFF] & classes) != 0;
}

// The same for a character of a text.
constexpr bool text_is(char c, unsigned classes)
{
    return (char_classes.bits[static_cast<unsigned char>(c)] & classes) != 0;
}

// A capital ASCII letter lowered; every other character as it is.
constexpr int char_lower(int c)
{
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

// The first characters of a text of size characters, at most eight, as a number: the first one lowest.
inline uint64_t characters_load(const char *text, size_t size)
{
    uint64_t characters = 0;
    if (size >= 8) {
        memcpy(&characters, text, 8);
    } else if (size >= 4) { // the first four and the last four, of which some may be the same
        uint32_t halves[2];
        memcpy(halves, text, 4);
        memcpy(halves + 1, text + size - 4, 4);
        characters = halves[0] | static_cast<uint64_t>(halves[1]) << 8 * (size - 4);
    } else {
        for (size_t i = 0; i < size; i++)
            characters |= static_cast<uint64_t>(static_cast<unsigned char>(text[i])) << 8 * i;
    }
    return characters;
}

// The value of a digit, hexadecimal ones among them.
constexpr int digit_value(char c)
{
    return c <= '9' ? c - '0' : char_lower(c) - 'a' + 10;
}

// Decodes an escape: three octal digits; an x and two hexadecimal ones, where those are allowed; a letter for
// a control character; any other character is itself. text is what follows the backslash, up to end; at the
// end the backslash is itself. *size becomes the number of characters of the escape.
char escape_decode(const char *text, const char *end, bool hexadecimal, size_t *size);

// Whether a text of size characters is a NUL-terminated word without regard to case.
bool text_is_word(const char *text, size_t size, const char *word);

// The first character of a text that is no white space; at the latest the NUL.
template <typename character> inline character *text_skip_white(character *text)
{
    while (text_is(*text, CHAR_WHITE))
        text++;
    return text;
}
