#include "analysis/plain_marks.h"

#include "analysis/expr_lexer.h"
#include "support/char_masks.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

// Those of the names, begun by a bit of starts, that are keywords. Names of letters alone are looked at.
static uint64_t mark_keywords(const unsigned char *text, uint64_t starts, uint64_t letters, uint64_t ends)
{
    uint64_t keywords = 0;
    uint64_t behind = behind_runs(starts, letters);
    if ((behind & ends) == 0)
        return 0;
    for (; behind != 0; behind = without_lowest_bit(behind), starts = without_lowest_bit(starts)) {
        unsigned start = lowest_bit(starts);
        unsigned end = lowest_bit(behind);
        if (lex_is_keyword(reinterpret_cast<const char *>(text) + start, end - start))
            keywords |= uint64_t{1} << end;
    }
    return keywords;
}

// The arguments at text, whose characters the masks tell.
__attribute__((always_inline)) static inline void
marks_from(const char_masks &masks, const unsigned char *text, size_t ready, plain_marks *marks)
{
    const uint64_t in_source = ready < plain_marks_width ? (uint64_t{1} << ready) - 1 : UINT64_MAX;
    uint64_t line_feeds = masks.line_feed & in_source;
    uint64_t line_ends = line_feeds | (masks.carriage & line_feeds >> 1);
    uint64_t ends = ((masks.comma & in_source) | line_ends) & up_to_lowest_bit(line_ends);
    uint64_t starts = behind_runs(ends << 1 | 1, masks.space | masks.tab);

    // A number with a digit or two: 5, -5, 5., .5. One that begins with 0 and a digit is perhaps octal.
    uint64_t numbers = (starts & ~masks.minus) | (starts & masks.minus) << 1;
    numbers &= (masks.digit & ~(masks.zero & masks.digit >> 1)) | (masks.point & masks.digit >> 1);
    numbers = behind_runs(numbers, masks.digit);
    numbers = (numbers & ~masks.point) | (numbers & masks.point) << 1;
    numbers = behind_runs(numbers, masks.digit);
    numbers = behind_runs(numbers, masks.space);
    uint64_t names = behind_runs(starts & masks.letter, masks.word) & ends;
    names &= ~mark_keywords(text, starts & masks.letter, masks.letter, ends);

    marks->starts = starts;
    marks->ends = ends;
    marks->plain = ends & (numbers | names | starts);
    marks->names = names;
}

static void find_plainly(const unsigned char *text, size_t ready, plain_marks *marks)
{
    marks_from(char_masks_read(text), text, ready, marks);
}

static bool always()
{
    return true;
}

#if defined(__x86_64__)

// Fills the masks of single characters, by whatever tells where a character stands. Digits and letters are
// there.
template <typename character_mask>
__attribute__((always_inline)) static inline void mask_singles(char_masks *masks, const character_mask &are)
{
    masks->word = masks->digit | masks->letter | are('_');
    masks->zero = are('0');
    masks->minus = are('-');
    masks->point = are('.');
    masks->space = are(' ');
    masks->tab = are('\t');
    masks->comma = are(',');
    masks->line_feed = are('\n');
    masks->carriage = are('\r');
}

// ---- With 32 bytes at a time ----

#define WITH_AVX2 __attribute__((target("avx2,bmi")))

WITH_AVX2 static inline uint64_t mask_avx2(__m256i low, __m256i high)
{
    auto bits_low = static_cast<uint32_t>(_mm256_movemask_epi8(low));
    auto bits_high = static_cast<uint32_t>(_mm256_movemask_epi8(high));
    return bits_low | static_cast<uint64_t>(bits_high) << 32;
}

WITH_AVX2 static inline __m256i between_avx2(__m256i characters, char low, char high)
{
    __m256i from_low = _mm256_sub_epi8(characters, _mm256_set1_epi8(low));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(from_low, _mm256_set1_epi8(static_cast<char>(high - low))),
                             from_low);
}

WITH_AVX2 static void find_avx2(const unsigned char *text, size_t ready, plain_marks *marks)
{
    __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(text));
    __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(text + 32));
    const __m256i case_bit = _mm256_set1_epi8('a' - 'A');
    auto are = [&](char c) WITH_AVX2 {
        __m256i wanted = _mm256_set1_epi8(c);
        return mask_avx2(_mm256_cmpeq_epi8(low, wanted), _mm256_cmpeq_epi8(high, wanted));
    };
    char_masks masks;
    masks.digit = mask_avx2(between_avx2(low, '0', '9'), between_avx2(high, '0', '9'));
    masks.letter = mask_avx2(between_avx2(_mm256_or_si256(low, case_bit), 'a', 'z'),
                             between_avx2(_mm256_or_si256(high, case_bit), 'a', 'z'));
    mask_singles(&masks, are);
    marks_from(masks, text, ready, marks);
}

static bool has_avx2()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi");
}

// ---- With 64 bytes at a time ----

#define WITH_AVX512 __attribute__((target("avx512f,avx512bw,bmi")))

WITH_AVX512 static inline uint64_t between_avx512(__m512i characters, char low, char high)
{
    __m512i from_low = _mm512_sub_epi8(characters, _mm512_set1_epi8(low));
    return _mm512_cmple_epu8_mask(from_low, _mm512_set1_epi8(static_cast<char>(high - low)));
}

WITH_AVX512 static void find_avx512(const unsigned char *text, size_t ready, plain_marks *marks)
{
    __m512i characters = _mm512_loadu_si512(text);
    auto are = [&](char c) WITH_AVX512 { return _mm512_cmpeq_epi8_mask(characters, _mm512_set1_epi8(c)); };
    char_masks masks;
    masks.digit = between_avx512(characters, '0', '9');
    masks.letter = between_avx512(_mm512_or_si512(characters, _mm512_set1_epi8('a' - 'A')), 'a', 'z');
    mask_singles(&masks, are);
    marks_from(masks, text, ready, marks);
}

static bool has_avx512()
{
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("bmi");
}

const plain_marks_way plain_marks_table[plain_marks_ways] = {
    {find_plainly, always}, {find_avx2, has_avx2}, {find_avx512, has_avx512}};

#else

const plain_marks_way plain_marks_table[plain_marks_ways] = {
    {find_plainly, always}, {find_plainly, always}, {find_plainly, always}};

#endif

// Chooses the way at the first call.
static void find_first(const unsigned char *text, size_t ready, plain_marks *marks)
{
    int way = plain_marks_ways - 1;
    while (!plain_marks_table[way].supported())
        way--;
    plain_marks_find = plain_marks_table[way].find;
    plain_marks_find(text, ready, marks);
}

void (*plain_marks_find)(const unsigned char *text, size_t ready, plain_marks *marks) = find_first;
