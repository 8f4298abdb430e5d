// Scan: where a run of characters ends.
//
// A loop over characters guesses at each of them whether it is the last of its kind; these routines look at
// 16 at once. Each has two bodies that give the same: one with the processor's instructions for 16 bytes, one
// in plain C++ (_portable) for every other machine. Up to 15 bytes after the character that is found are
// read.
#pragma once

#include "support/text.h"

#include <stddef.h>
#include <stdint.h>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

// The first character from text on, at the latest end, that is no letter, digit or underscore.
inline const unsigned char *scan_word_portable(const unsigned char *text, const unsigned char *end)
{
    while (text < end && (char_classes.bits[*text] & CHAR_WORD) != 0)
        text++;
    return text;
}

// The first character from text on that isn't simply part of a raw text: the comma, the parentheses, and
// whatever is no printable ASCII character.
inline const unsigned char *scan_raw_portable(const unsigned char *text)
{
    while (*text >= ' ' && *text < 127 && *text != ',' && *text != '(' && *text != ')')
        text++;
    return text;
}

// The first character from text on that isn't simply part of a string: a quote of either kind, a backslash, a
// line feed, a NUL.
inline const unsigned char *scan_string_portable(const unsigned char *text)
{
    while (*text != '"' && *text != '`' && *text != '\\' && *text != '\n' && *text != 0)
        text++;
    return text;
}

// The first line feed or NUL from text on.
inline const unsigned char *scan_line_portable(const unsigned char *text)
{
    while (*text != '\n' && *text != 0)
        text++;
    return text;
}

// The first character from text on, at the latest end, that the source folds: a backslash, a CR, byte 26.
inline const unsigned char *scan_fold_portable(const unsigned char *text, const unsigned char *end)
{
    while (text < end && *text != '\\' && *text != '\r' && *text != 26)
        text++;
    return text;
}

// Line feeds from text up to end.
inline size_t count_line_feeds_portable(const unsigned char *text, const unsigned char *end)
{
    size_t count = 0;
    for (; text < end; text++)
        count += *text == '\n';
    return count;
}

// Tells whether a text of 1 to 16 characters is a plain number, whose value depends on nothing: a minus or
// none, digits with one point at most, and nothing else. A leading 0 before a digit makes an octal number,
// which isn't plain.
inline bool scan_is_number_portable(const unsigned char *text, size_t size)
{
    size_t at = text[0] == '-' ? 1 : 0;
    size_t digits = 0;
    size_t points = 0;
    if (text[at] == '0' && at + 1 < size && (char_classes.bits[text[at + 1]] & CHAR_DIGIT) != 0)
        return false;
    for (; at < size; at++) {
        digits += (char_classes.bits[text[at]] & CHAR_DIGIT) != 0;
        points += text[at] == '.';
    }
    return digits > 0 && points <= 1 && digits + points + (text[0] == '-') == size;
}

#if defined(__x86_64__)

// 16 characters at text.
inline __m128i scan_load(const unsigned char *text)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
}

// Those of 16 characters that are the wanted one.
inline __m128i scan_equal(__m128i characters, char wanted)
{
    return _mm_cmpeq_epi8(characters, _mm_set1_epi8(wanted));
}

// Those of 16 characters from low to high.
inline __m128i scan_between(__m128i characters, char low, char high)
{
    __m128i from_low = _mm_sub_epi8(characters, _mm_set1_epi8(low));
    return _mm_cmpeq_epi8(_mm_min_epu8(from_low, _mm_set1_epi8(static_cast<char>(high - low))), from_low);
}

// A bit for each of 16 characters.
inline uint32_t scan_bits(__m128i characters)
{
    return static_cast<uint32_t>(_mm_movemask_epi8(characters));
}

// Index of the lowest bit of bits that aren't 0.
inline unsigned scan_lowest(uint32_t bits)
{
    return static_cast<unsigned>(__builtin_ctz(bits));
}

inline const unsigned char *scan_word(const unsigned char *text, const unsigned char *end)
{
    for (; text < end; text += 16) {
        __m128i characters = scan_load(text);
        __m128i letter = scan_between(_mm_or_si128(characters, _mm_set1_epi8('a' - 'A')), 'a', 'z');
        __m128i word = _mm_or_si128(letter, scan_between(characters, '0', '9'));
        uint32_t others = scan_bits(_mm_or_si128(word, scan_equal(characters, '_'))) ^ 0xFFFF;
        if (others != 0) {
            text += scan_lowest(others);
            return text < end ? text : end;
        }
    }
    return end;
}

inline const unsigned char *scan_raw(const unsigned char *text)
{
    for (;; text += 16) {
        __m128i characters = scan_load(text);
        __m128i marks = _mm_or_si128(scan_equal(characters, ','), scan_between(characters, '(', ')'));
        uint32_t plain = scan_bits(_mm_andnot_si128(marks, scan_between(characters, ' ', '~')));
        if (plain != 0xFFFF)
            return text + scan_lowest(~plain);
    }
}

inline const unsigned char *scan_string(const unsigned char *text)
{
    for (;; text += 16) {
        __m128i characters = scan_load(text);
        __m128i quotes = _mm_or_si128(scan_equal(characters, '"'), scan_equal(characters, '`'));
        __m128i ends = _mm_or_si128(scan_equal(characters, '\n'), scan_equal(characters, 0));
        uint32_t marks = scan_bits(_mm_or_si128(_mm_or_si128(quotes, ends), scan_equal(characters, '\\')));
        if (marks != 0)
            return text + scan_lowest(marks);
    }
}

inline const unsigned char *scan_line(const unsigned char *text)
{
    for (;; text += 16) {
        __m128i characters = scan_load(text);
        uint32_t marks = scan_bits(_mm_or_si128(scan_equal(characters, '\n'), scan_equal(characters, 0)));
        if (marks != 0)
            return text + scan_lowest(marks);
    }
}

inline const unsigned char *scan_fold(const unsigned char *text, const unsigned char *end)
{
    for (; text < end; text += 16) {
        __m128i characters = scan_load(text);
        __m128i ends = _mm_or_si128(scan_equal(characters, '\r'), scan_equal(characters, 26));
        uint32_t marks = scan_bits(_mm_or_si128(ends, scan_equal(characters, '\\')));
        if (marks != 0) {
            text += scan_lowest(marks);
            return text < end ? text : end;
        }
    }
    return end;
}

inline size_t count_line_feeds(const unsigned char *text, const unsigned char *end)
{
    // A comparison that hits gives -1 in its byte; the bytes are added up in two halves.
    __m128i count = _mm_setzero_si128();
    for (; end - text >= 16; text += 16) {
        __m128i hits = _mm_sub_epi8(_mm_setzero_si128(), scan_equal(scan_load(text), '\n'));
        count = _mm_add_epi64(count, _mm_sad_epu8(hits, _mm_setzero_si128()));
    }
    auto low = static_cast<size_t>(_mm_cvtsi128_si64(count));
    auto high = static_cast<size_t>(_mm_cvtsi128_si64(_mm_srli_si128(count, 8)));
    return low + high + count_line_feeds_portable(text, end);
}

inline bool scan_is_number(const unsigned char *text, size_t size)
{
    __m128i characters = scan_load(text);
    uint32_t all = (uint32_t{2} << (size - 1)) - 1;
    uint32_t minus = text[0] == '-' ? 1 : 0;
    uint32_t digits = scan_bits(scan_between(characters, '0', '9')) & all;
    uint32_t points = scan_bits(scan_equal(characters, '.')) & all;
    // A digit after a 0 in front of all others: the number could be octal.
    uint32_t octal = text[minus] == '0' ? digits >> (minus + 1) & 1 : 0;
    return (digits | points | minus) == all && (points & (points - 1)) == 0 && digits != 0 && octal == 0;
}

#else

inline constexpr auto scan_word = scan_word_portable;
inline constexpr auto scan_raw = scan_raw_portable;
inline constexpr auto scan_string = scan_string_portable;
inline constexpr auto scan_line = scan_line_portable;
inline constexpr auto scan_fold = scan_fold_portable;
inline constexpr auto count_line_feeds = count_line_feeds_portable;
inline constexpr auto scan_is_number = scan_is_number_portable;

#endif
