// Character masks: where in 64 characters of text the characters of a kind stand, a bit each.
//
// A loop over characters guesses at each of them whether it is the last of its kind, and a wrong guess costs
// more than looking at sixty others. With masks a whole line is cut up by a few operations on numbers. Bit n
// belongs to the character n behind the start.
#pragma once

#include "support/text.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

constexpr int char_masks_width = 64; // characters that are looked at; so many have to be readable

struct char_masks {
    uint64_t digit;     // 0 to 9
    uint64_t zero;      // 0
    uint64_t letter;    // A to Z, a to z
    uint64_t word;      // letter, digit, underscore
    uint64_t minus;     // -
    uint64_t point;     // .
    uint64_t space;     // blank
    uint64_t tab;       // tab
    uint64_t comma;     // ,
    uint64_t line_feed; // line feed
    uint64_t carriage;  // CR
};

// All that looks at characters stands here twice: with instructions for 16 at a time, and one at a time
// (singly) for machines without them. Both give the same.

// The masks of the characters from text on.
char_masks char_masks_read(const unsigned char *text);
char_masks char_masks_read_singly(const unsigned char *text);

// Index of the lowest bit of a mask that isn't 0.
inline unsigned lowest_bit(uint64_t mask)
{
    return static_cast<unsigned>(__builtin_ctzll(mask));
}

// Index of the highest bit of a mask that isn't 0.
inline unsigned highest_bit(uint64_t mask)
{
    return 63 - static_cast<unsigned>(__builtin_clzll(mask));
}

// A mask without its lowest bit.
inline uint64_t without_lowest_bit(uint64_t mask)
{
    return mask & (mask - 1);
}

// The bits up to a number, that one included.
inline uint64_t bits_through(unsigned number)
{
    return (uint64_t{2} << number) - 1;
}

// The bits up to the lowest bit of a mask, that one included; all bits if the mask is 0.
inline uint64_t up_to_lowest_bit(uint64_t mask)
{
    return mask ^ (mask - 1);
}

// Each bit of places that lies in a run of characters moves to the first place behind that run; a bit outside
// any run stays. No run may hold two of them.
inline uint64_t behind_runs(uint64_t places, uint64_t runs)
{
    return (((places & runs) + runs) & ~runs) | (places & ~runs);
}

// The number of letters, digits and underscores from text on, at most so many; as many characters have to be
// readable.
constexpr unsigned word_run_max = 16;
unsigned word_run(const unsigned char *text);
unsigned word_run_singly(const unsigned char *text);

// The number of blanks and tabs from text on, at most 16; so many characters have to be readable.
unsigned blank_run(const unsigned char *text);
unsigned blank_run_singly(const unsigned char *text);

// The first character from text on, at the latest end, that is a backslash, CR, line feed or byte 26. 31
// characters behind end have to be readable.
const unsigned char *plain_run_end(const unsigned char *text, const unsigned char *end);
const unsigned char *plain_run_end_singly(const unsigned char *text, const unsigned char *end);

// Marks those of the 16 characters from text on that aren't simply part of a raw text: the comma, the
// backslash, whatever isn't printable, and the parentheses.
uint64_t raw_marks(const unsigned char *text);
uint64_t raw_marks_singly(const unsigned char *text);

// The first character from text on, at the latest end, that isn't simply part of a string: a quote of either
// kind, a NUL, and what isn't plain. 15 characters behind end have to be readable.
const unsigned char *string_run_end(const unsigned char *text, const unsigned char *end);
const unsigned char *string_run_end_singly(const unsigned char *text, const unsigned char *end);

#if defined(__SSE2__)

// 16 characters that lie between two, of which low is the lesser.
inline __m128i characters_between(__m128i characters, char low, char high)
{
    __m128i from_low = _mm_sub_epi8(characters, _mm_set1_epi8(low));
    return _mm_cmpeq_epi8(_mm_min_epu8(from_low, _mm_set1_epi8(static_cast<char>(high - low))), from_low);
}

inline uint64_t characters_mask(__m128i hits, int at)
{
    return static_cast<uint64_t>(static_cast<uint32_t>(_mm_movemask_epi8(hits))) << at;
}

inline uint64_t characters_mask(__m128i characters, char wanted, int at)
{
    return characters_mask(_mm_cmpeq_epi8(characters, _mm_set1_epi8(wanted)), at);
}

inline char_masks char_masks_read(const unsigned char *text)
{
    char_masks masks{};
    for (int at = 0; at < char_masks_width; at += 16) {
        __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + at));
        __m128i digit = characters_between(characters, '0', '9');
        __m128i letter = characters_between(_mm_or_si128(characters, _mm_set1_epi8('a' - 'A')), 'a', 'z');
        __m128i low_line = _mm_cmpeq_epi8(characters, _mm_set1_epi8('_'));
        masks.digit |= characters_mask(digit, at);
        masks.letter |= characters_mask(letter, at);
        masks.word |= characters_mask(_mm_or_si128(_mm_or_si128(digit, letter), low_line), at);
        masks.zero |= characters_mask(characters, '0', at);
        masks.minus |= characters_mask(characters, '-', at);
        masks.point |= characters_mask(characters, '.', at);
        masks.space |= characters_mask(characters, ' ', at);
        masks.tab |= characters_mask(characters, '\t', at);
        masks.comma |= characters_mask(characters, ',', at);
        masks.line_feed |= characters_mask(characters, '\n', at);
        masks.carriage |= characters_mask(characters, '\r', at);
    }
    return masks;
}

inline unsigned word_run(const unsigned char *text)
{
    __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
    __m128i letter = characters_between(_mm_or_si128(characters, _mm_set1_epi8('a' - 'A')), 'a', 'z');
    __m128i low_line = _mm_cmpeq_epi8(characters, _mm_set1_epi8('_'));
    __m128i word = _mm_or_si128(_mm_or_si128(characters_between(characters, '0', '9'), letter), low_line);
    return lowest_bit(~characters_mask(word, 0) | 1 << 16);
}

inline uint64_t raw_marks(const unsigned char *text)
{
    __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
    uint64_t printable = characters_mask(characters_between(characters, ' ', '~'), 0);
    uint64_t parentheses = characters_mask(characters_between(characters, '(', ')'), 0);
    return (printable ^ 0xFFFF) | parentheses | characters_mask(characters, ',', 0) |
           characters_mask(characters, '\\', 0);
}

inline const unsigned char *string_run_end(const unsigned char *text, const unsigned char *end)
{
    for (; text < end; text += 16) {
        __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
        uint64_t others = characters_mask(characters, '"', 0) | characters_mask(characters, '`', 0) |
                          characters_mask(characters, '\\', 0) | characters_mask(characters, '\r', 0) |
                          characters_mask(characters, '\n', 0) | characters_mask(characters, 26, 0) |
                          characters_mask(characters, 0, 0);
        if (others != 0) {
            text += lowest_bit(others);
            break;
        }
    }
    return text < end ? text : end;
}

inline unsigned blank_run(const unsigned char *text)
{
    __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
    uint64_t blanks = characters_mask(characters, ' ', 0) | characters_mask(characters, '\t', 0);
    return lowest_bit(~blanks | 1 << 16);
}

// Marks those of 16 characters that are a backslash, CR, line feed or byte 26.
inline uint64_t plain_others(const unsigned char *text)
{
    __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
    __m128i breaks = _mm_or_si128(_mm_cmpeq_epi8(characters, _mm_set1_epi8('\n')),
                                  _mm_cmpeq_epi8(characters, _mm_set1_epi8('\r')));
    __m128i others = _mm_or_si128(_mm_cmpeq_epi8(characters, _mm_set1_epi8('\\')),
                                  _mm_cmpeq_epi8(characters, _mm_set1_epi8(26)));
    return characters_mask(_mm_or_si128(breaks, others), 0);
}

inline const unsigned char *plain_run_end(const unsigned char *text, const unsigned char *end)
{
    for (; text < end; text += 32) {
        uint64_t others = plain_others(text) | plain_others(text + 16) << 16;
        if (others != 0) {
            text += lowest_bit(others);
            break;
        }
    }
    return text < end ? text : end;
}

#else

inline char_masks char_masks_read(const unsigned char *text)
{
    return char_masks_read_singly(text);
}

inline unsigned word_run(const unsigned char *text)
{
    return word_run_singly(text);
}

inline uint64_t raw_marks(const unsigned char *text)
{
    return raw_marks_singly(text);
}

inline const unsigned char *string_run_end(const unsigned char *text, const unsigned char *end)
{
    return string_run_end_singly(text, end);
}

inline unsigned blank_run(const unsigned char *text)
{
    return blank_run_singly(text);
}

inline const unsigned char *plain_run_end(const unsigned char *text, const unsigned char *end)
{
    return plain_run_end_singly(text, end);
}

#endif

inline uint64_t raw_marks_singly(const unsigned char *text)
{
    uint64_t marks = 0;
    for (int i = 0; i < 16; i++) {
        bool simple = text[i] >= ' ' && text[i] <= '~' && strchr(",\\()", text[i]) == nullptr;
        marks |= simple ? 0 : uint64_t{1} << i;
    }
    return marks;
}

inline const unsigned char *string_run_end_singly(const unsigned char *text, const unsigned char *end)
{
    while (text < end && memchr("\"`\\\r\n\x1A", *text, 7) == nullptr)
        text++;
    return text;
}

inline unsigned blank_run_singly(const unsigned char *text)
{
    unsigned run = 0;
    while (run < 16 && (text[run] == ' ' || text[run] == '\t'))
        run++;
    return run;
}

inline const unsigned char *plain_run_end_singly(const unsigned char *text, const unsigned char *end)
{
    while (text < end && *text != '\\' && *text != '\r' && *text != '\n' && *text != 26)
        text++;
    return text;
}

inline unsigned word_run_singly(const unsigned char *text)
{
    unsigned run = 0;
    while (run < word_run_max && char_is(text[run], CHAR_WORD))
        run++;
    return run;
}

inline char_masks char_masks_read_singly(const unsigned char *text)
{
    char_masks masks{};
    for (int at = 0; at < char_masks_width; at++) {
        unsigned char c = text[at];
        uint64_t bit = uint64_t{1} << at;
        masks.digit |= char_is(c, CHAR_DIGIT) ? bit : 0;
        masks.letter |= char_is(c, CHAR_LETTER) ? bit : 0;
        masks.word |= char_is(c, CHAR_WORD) ? bit : 0;
        masks.zero |= c == '0' ? bit : 0;
        masks.minus |= c == '-' ? bit : 0;
        masks.point |= c == '.' ? bit : 0;
        masks.space |= c == ' ' ? bit : 0;
        masks.tab |= c == '\t' ? bit : 0;
        masks.comma |= c == ',' ? bit : 0;
        masks.line_feed |= c == '\n' ? bit : 0;
        masks.carriage |= c == '\r' ? bit : 0;
    }
    return masks;
}
