// The program's own string helpers: copies, comparisons and searches that accept null texts. Nearly
// every module calls them. Their rules differ from the C library's in small, intended ways.
//
// Functions that return a text of their own keep it in one buffer each, overwritten by the next
// call of the same function; copy what is needed longer.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

struct text_freer {
    void operator()(char *text) const { std::free(text); }
};

// A text on the heap (malloc), freed at the end of its scope.
using heap_text = std::unique_ptr<char, text_freer>;

// Copies `src` into `dst` of `len` bytes, cut if need be. Returns `dst`; a null on either side
// leaves it unchanged.
char *lcpy(char *dst, const char *src, std::size_t len);

// --- The C library's functions, accepting null texts ---

// Comparisons. A null on either side compares as 1, so that null never equals anything.
int s_strcmp(const char *a, const char *b);
// Ignores case. If one text is a prefix of the other the result is 1, both ways round.
int s_stricmp(const char *a, const char *b);
// Compare n characters: 0 only if both texts have n equal characters; 1 if one ends, or they
// differ, before the n-th; else the difference at the n-th. The second ignores case.
int s_strncmp(const char *a, const char *b, std::size_t n);
int s_strnicmp(const char *a, const char *b, std::size_t n);

// Lower-cases A to Z in place. Returns `text`, which may not be null.
char *strlwr(char *text);

const char *s_strstr(const char *hay, const char *needle);
std::size_t s_strlen(const char *text);
// Returns the leading decimal number, 0 without one. A number outside the range of int becomes the
// nearest int.
int s_atoi(const char *text);

// Returns a copy of `text` on the heap, which the caller frees. If memory runs out prints so and
// returns null.
char *maistrdup(const char *text);

// Splits a text at each character of `sep`, two in a row with an empty token between them. A call
// with a text starts anew (with a copy of its first 1023 characters), one with null goes on.
// Returns the next token, null after the last.
char *s_strtoken(const char *string, const char *sep);

// Returns what follows the first `separator` of `text`; nothing if it holds none.
std::string_view text_after(std::string_view text, char separator);

// Returns a copy of `text` as strlwr leaves it.
std::string lower_case(std::string_view text);

// --- Part of the fixed interface; the program itself does not call these ---

// Copies at most `len` characters of `src` into `dst`, which holds len + 1 bytes; a null `src`
// counts as "". Always sets dst[len] to NUL as well. Returns the NUL at the end of the copied text;
// `dst` if either is null.
char *ncpy(char *dst, const char *src, std::size_t len);

// Appends `src` until `dst` (len + 1 bytes) holds `len` characters. Always sets dst[len] to NUL.
// Returns `dst`; a null on either side leaves it unchanged.
char *ncat(char *dst, const char *src, std::size_t len);

// Appends where `len` is the size of `dst` in bytes. Returns `dst`; a null on either side leaves it
// unchanged.
char *lcat(char *dst, const char *src, std::size_t len);

// Copies `src` into `dst`, which must be large enough; a null `src` makes it "".
char *s_strcpy(char *dst, const char *src);
// Appends the formatted text, at most 1023 characters of it, to `des`, which must be large enough.
[[gnu::format(printf, 2, 3)]] char *s_strcat(char *des, const char *format, ...);
// Grows the heap text `str`, null counting as "", by `add`. The caller owns and frees the result;
// if memory runs out it is `str` unchanged.
char *s_stradd(char *str, const char *add);

// Lower-cases in place what the C library takes for letters (tolower, ISO C 7.4.2.1). Returns
// `text`, which may be null.
char *s_strlwr(char *text);

const char *s_strchr(const char *text, int character);
// Returns the first match in `hay` ignoring case, or null.
const char *s_stristr(const char *hay, const char *needle);
// Returns 1, or 0 for null. The text keeps its trailing blanks.
int s_strtrm(const char *text);

// Returns the text from the first double quote to the next or the end; "" without a quote.
char *remove_quote(const char *str);
// Replaces each `from` by `to` in place.
char *char_replace(char *str, char from, char to);

// Sorts in place with the contract of qsort (ISO C 7.22.5.2). Not stable.
void myqsort(void *base, std::size_t nmemb, std::size_t size,
             int (*compar)(const void *, const void *));
// Swaps two records of `size` bytes.
void exchange(void *a, void *b, std::size_t size);
