// Scan: where a run of characters ends.
//
// The routines compare 16 characters at once in the compiler's vector types; a loop over single characters
// takes 1.34 times the time of a whole conversion. Up to 15 bytes after the character that is found, or after
// the limit, are read.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

// ---- 16 characters ----

typedef unsigned char scan_block __attribute__((vector_size(16))); // 16 characters
typedef signed char scan_mask __attribute__((vector_size(16)));    // for each of them -1 or 0: yes or no

inline scan_block scan_load(const void *text)
{
    scan_block characters;
    memcpy(&characters, text, sizeof characters);
    return characters;
}

// Those that are the wanted character.
inline scan_mask scan_equal(scan_block characters, unsigned char wanted)
{
    return characters == (scan_block{} + wanted);
}

// Those from low to high.
inline scan_mask scan_between(scan_block characters, unsigned char low, unsigned char high)
{
    return characters - low <= (scan_block{} + static_cast<unsigned char>(high - low));
}

// A bit for each element of a mask, the first one lowest.
inline uint32_t scan_bits_portable(scan_mask mask)
{
    uint32_t bits = 0;
    for (unsigned i = 0; i < sizeof mask; i++)
        bits |= static_cast<uint32_t>(mask[i] & 1) << i;
    return bits;
}

#if defined(__x86_64__)
inline uint32_t scan_bits(scan_mask mask)
{
    return static_cast<uint32_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(mask)));
}
#else
inline constexpr auto scan_bits = scan_bits_portable;
#endif

// The number of characters in front of the first one for which matches returns a mask element, at most limit.
template <typename function> inline size_t scan_for(const void *text, size_t limit, function matches)
{
    for (size_t at = 0; at < limit; at += sizeof(scan_block)) {
        uint32_t bits = scan_bits(matches(scan_load(static_cast<const char *>(text) + at)));
        if (bits == 0)
            continue;
        at += static_cast<size_t>(__builtin_ctz(bits));
        return at < limit ? at : limit;
    }
    return limit;
}

// ---- The scans ----

// White space at the beginning of a text, at most limit.
inline size_t scan_white(const void *text, size_t limit)
{
    return scan_for(text, limit,
                    [](scan_block c) { return ~(scan_between(c, '\t', '\r') | scan_equal(c, ' ')); });
}

// Letters, digits and underscores at the beginning of a text, at most limit.
inline size_t scan_word(const void *text, size_t limit)
{
    return scan_for(text, limit, [](scan_block c) {
        return ~(scan_between(c | ('a' - 'A'), 'a', 'z') | scan_between(c, '0', '9') | scan_equal(c, '_'));
    });
}

// Characters before the first one that isn't simply part of a raw text: the comma, the parentheses, and
// whatever is no printable ASCII character.
inline size_t scan_raw(const void *text)
{
    return scan_for(text, SIZE_MAX, [](scan_block c) {
        return ~scan_between(c, ' ', '~') | scan_between(c, '(', ')') | scan_equal(c, ',');
    });
}

// Characters before the first one that isn't simply part of a string: a quote of either kind, a backslash, a
// line feed, a NUL.
inline size_t scan_string(const void *text)
{
    return scan_for(text, SIZE_MAX, [](scan_block c) {
        return scan_equal(c, '"') | scan_equal(c, '`') | scan_equal(c, '\\') | scan_equal(c, '\n') |
               scan_equal(c, 0);
    });
}

// Characters before the first line feed, at most limit.
inline size_t scan_line(const void *text, size_t limit)
{
    return scan_for(text, limit, [](scan_block c) { return scan_equal(c, '\n'); });
}

// Characters before the first one that the source folds, at most limit: a backslash, a CR, byte 26.
inline size_t scan_fold(const void *text, size_t limit)
{
    return scan_for(text, limit, [](scan_block c) {
        return scan_equal(c, '\\') | scan_equal(c, '\r') | scan_equal(c, 26);
    });
}

// Line feeds from text up to end. Nothing after end is read.
inline size_t count_line_feeds(const unsigned char *text, const unsigned char *end)
{
    size_t count = 0;
    while (end - text >= 16) {
        scan_mask counts{}; // by offset in a block, negative; they hold 127 blocks
        const ptrdiff_t blocks = (end - text) / 16;
        for (const unsigned char *stop = text + 16 * (blocks < 127 ? blocks : 127); text < stop; text += 16)
            counts += scan_equal(scan_load(text), '\n');
        for (int i = 0; i < 16; i++)
            count += static_cast<size_t>(-counts[i]);
    }
    for (; text < end; text++)
        count += *text == '\n';
    return count;
}

// Whether a text of 1 to 16 characters is a plain number: an optional minus, and digits with one point at
// most. A leading 0 before a digit makes an octal number, which isn't plain.
inline bool scan_is_number(const char *text, size_t size)
{
    scan_block characters = scan_load(text);
    uint32_t all = (uint32_t{2} << (size - 1)) - 1;
    uint32_t minus = text[0] == '-' ? 1 : 0;
    uint32_t digits = scan_bits(scan_between(characters, '0', '9')) & all;
    uint32_t points = scan_bits(scan_equal(characters, '.')) & all;
    // A digit after a 0 in front of all others: the number could be octal.
    uint32_t octal = text[minus] == '0' ? digits >> (minus + 1) & 1 : 0;
    return (digits | points | minus) == all && (points & (points - 1)) == 0 && digits != 0 && octal == 0;
}
