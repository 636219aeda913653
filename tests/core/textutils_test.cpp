#include <varnow/core/textutils.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>

using namespace varnow;

TEST(TextUtils, TellNumbersAndDatesFromTexts)
{
    std::string const digits = "0123456789", numerals = digits + "+,-.Ee";
    for (int c = CHAR_MIN; c <= CHAR_MAX; ++c) {
        char const x = static_cast<char>(c);
        EXPECT_EQ(c_digit(x), c != 0 && digits.find(x) != digits.npos) << c;
        EXPECT_EQ(c_numerical(x), c != 0 && numerals.find(x) != digits.npos) << c;
    }
    for (char const* x :
         {"12345", "123456789012345", "1234567890123456.5", "1234567890123456,", "-1e5", "e"})
        EXPECT_EQ(numerical(x), 1) << x;
    for (char const* x : {"", "1234567890123456", "12 ", "1x", "NaN", "1234567890.12345x"})
        EXPECT_EQ(numerical(x), 0) << x;
    for (char const* x : {"2024-02-29", "2024/02.29", "9999.99.99"}) EXPECT_EQ(isdate(x), 1) << x;
    for (char const* x :
         {"", "2024-02-2", "2024-02-299", "2024-02:29", "2024,02-29", "202x-02-29", "2024-02-2 "})
        EXPECT_EQ(isdate(x), 0) << x;
}

TEST(TextUtils, CutWithEveryArgumentClamped)
{
    std::pair<Text, char const*> const cases[] = {{subtext("abcde", 2, 3), "bcd"},
                                                  {subtext("abcde", 4, 3), "de"},
                                                  {subtext("abc", 5, 2), "c"},
                                                  {subtext("abc", -4, 2), "ab"},
                                                  {subtext("abc", 2, 0), ""},
                                                  {subtext("abc", 2, INT_MAX), "bc"},
                                                  {subtext("abc", INT_MAX, INT_MAX), "c"},
                                                  {subtext("abc", INT_MIN, INT_MAX), "abc"},
                                                  {subtext("abc", 1, INT_MIN), ""},
                                                  {subtext("", 1, 1), ""},
                                                  {part("abc", 2), "ab"},
                                                  {part("abc", 4), "abc"},
                                                  {part("abc", INT_MIN), ""},
                                                  {endtext("abc", 2), "bc"},
                                                  {endtext("abc", INT_MIN), "abc"},
                                                  {endtext("abc", 3), "c"},
                                                  {endtext("abc", INT_MAX), "c"},
                                                  {endtext("", 1), ""},
                                                  {quote(""), "\"\""},
                                                  {quote("a\"b"), "\"a\"b\""}};
    for (auto const& [got, expected] : cases) EXPECT_EQ(got, expected);
}

TEST(TextUtils, FillWithCopiesOfOneParagraph)
{
    Text const one = lorem_ipsum(1);
    EXPECT_EQ(one.firstpos("Lorem ipsum dolor sit amet, consectetur adipiscing elit."), 1);
    EXPECT_EQ(one.letter(one.len), " ");
    EXPECT_EQ(lorem_ipsum(3), one + one + one);
    for (int none : {0, INT_MIN}) EXPECT_EQ(lorem_ipsum(none), "");
    EXPECT_THROW(lorem_ipsum(INT_MAX), std::bad_alloc);
}

TEST(TextUtils, ChangeThePolishLettersAndNoOtherByte)
{
    // a c e l n o s z z, small and capital, in the order of the alphabet
    std::string const latin2 =
        "\xB1\xE6\xEA\xB3\xF1\xF3\xB6\xBC\xBF\xA1\xC6\xCA\xA3\xD1\xD3\xA6\xAC\xAF";
    Text const x = "<" + Text(latin2) + ">";
    EXPECT_EQ(remove_pl(x), "<acelnoszzACELNOSZZ>");
    EXPECT_EQ(to_win1250(x),
              "<\xA5\x86\xA9\x88\xE4\xA2\x98\xAB\xBE\xA4\x8F\xA8\x9D\xE3\xE0\x97\x8D\xBD>");
    EXPECT_EQ(to_utf8(x), u8"<ąćęłńóśźżĄĆĘŁŃÓŚŹŻ>");
    EXPECT_EQ(latin2_to_utf8('\xB1'), "\xC4\x85");
    EXPECT_EQ(to_utf8(""), "");
    for (int c = CHAR_MIN; c <= CHAR_MAX; ++c) {
        char const byte = static_cast<char>(c);
        if (latin2.find(byte) != latin2.npos) continue;
        EXPECT_EQ(replace_pl(byte), byte);
        EXPECT_EQ(latin2_to_win1250(byte), byte);
        EXPECT_EQ(latin2_to_utf8(byte), Text(byte));
    }
}
