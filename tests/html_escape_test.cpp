// SPDX-License-Identifier: MIT
#include "html_escape.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace html_escape_test {

namespace {

using escapeFunction = std::string (*)(const std::string&);
using escapeBytesFunction = std::string (*)(const char*, unsigned int);

std::string htmlWithoutNbsp(const std::string& text) {
  return HTMLescape(text, false);
}

std::string htmlBytesWithoutNbsp(const char* text, unsigned int length) {
  return HTMLescape(text, length, false);
}

// Checks the results of all 256 byte values.  Row i of the table is the result for
// the sixteen bytes from 16 * i on.
void checkAllBytes(escapeFunction escape, escapeBytesFunction escapeBytes,
                   const char* const (&rows)[16]) {
  for (unsigned int row = 0; row < 16; row++) {
    SCOPED_TRACE(testing::Message() << "bytes from " << row * 16);
    std::string bytes;
    for (unsigned int i = 0; i < 16; i++) {
      bytes += static_cast<char>(static_cast<unsigned char>(row * 16 + i));
    }
    EXPECT_EQ(escape(bytes), rows[row]);
    EXPECT_EQ(escapeBytes(bytes.data(), 16), rows[row]);
    EXPECT_EQ(escapeBytes(bytes.data(), 0), "") << "no more bytes than the length says";
  }
}

// One text and its result.
struct textCase {
  std::string text;
  std::string expected;
};

template <std::size_t N>
void checkTexts(escapeFunction escape, escapeBytesFunction escapeBytes,
                const textCase (&cases)[N]) {
  for (const textCase& entry : cases) {
    SCOPED_TRACE(testing::Message() << "text \"" << entry.text << "\"");
    EXPECT_EQ(escape(entry.text), entry.expected);
    // Nothing after the length is looked at.
    const std::string longer = entry.text + "41";
    EXPECT_EQ(escapeBytes(longer.data(), static_cast<unsigned int>(entry.text.size())),
              entry.expected);
  }
}

// --- Percent-encoding ----------------------------------------------------------

TEST(URIescape, TreatsEveryByteByItsRule) {
  const char* const rows[16] = {
      "%00%01%02%03%04%05%06%07%08%09%0A%0B%0C%0D%0E%0F",
      "%10%11%12%13%14%15%16%17%18%19%1A%1B%1C%1D%1E%1F",
      "%20!%22%23%24%25%26%27()*%2B%2C-.%2F",
      "0123456789%3A%3B%3C%3D%3E%3F",
      "%40ABCDEFGHIJKLMNO",
      "PQRSTUVWXYZ%5B%5C%5D%5E_",
      "`abcdefghijklmno",
      "pqrstuvwxyz%7B%7C%7D~%7F",
      "%80%81%82%83%84%85%86%87%88%89%8A%8B%8C%8D%8E%8F",
      "%90%91%92%93%94%95%96%97%98%99%9A%9B%9C%9D%9E%9F",
      "%A0%A1%A2%A3%A4%A5%A6%A7%A8%A9%AA%AB%AC%AD%AE%AF",
      "%B0%B1%B2%B3%B4%B5%B6%B7%B8%B9%BA%BB%BC%BD%BE%BF",
      "%C0%C1%C2%C3%C4%C5%C6%C7%C8%C9%CA%CB%CC%CD%CE%CF",
      "%D0%D1%D2%D3%D4%D5%D6%D7%D8%D9%DA%DB%DC%DD%DE%DF",
      "%E0%E1%E2%E3%E4%E5%E6%E7%E8%E9%EA%EB%EC%ED%EE%EF",
      "%F0%F1%F2%F3%F4%F5%F6%F7%F8%F9%FA%FB%FC%FD%FE%FF",
  };
  checkAllBytes(URIescape, URIescape, rows);
}

TEST(URIescape, EncodesWholeTexts) {
  const textCase cases[] = {
      {"", ""},
      {" ", "%20"},
      {"\xe9", "%E9"},
      {"~", "~"},
      {"a b", "a%20b"},
      {"800x600", "800x600"},
      {"a=1&b=2", "a%3D1%26b%3D2"},
      {"100%", "100%25"},
      {"%41", "%2541"},
      {"caf\xc3\xa9", "caf%C3%A9"},
      {std::string("a\0b", 3), "a%00b"},
      {"-._!()*`~", "-._!()*`~"},
  };
  checkTexts(URIescape, URIescape, cases);
}

// --- Percent-decoding ----------------------------------------------------------

const textCase percentDecoding[] = {
    {"", ""},
    {"plain", "plain"},
    {"%41", "A"},
    {"%61%62", "ab"},
    {"x%41y", "xAy"},
    {"%e9%E9%eE", "\xe9\xe9\xee"},
    {"%00", std::string(1, '\0')},
    {std::string("a\0%41", 5), std::string("a\0A", 3)},
    {"%7f%80%ff", "\x7f\x80\xff"},
    {"\xe9\xff", "\xe9\xff"},
    {"+", "+"},
    {"a+b", "a+b"},
    // The end of the text within an escape.
    {"%", ""},
    {"a%", "a"},
    {"%4", ""},
    {"a%4", "a"},
    {"%41%", "A"},
    {"%41%4", "A"},
    {"%f", ""},
    // Texts that only look like escapes.
    {"%G1", "%G1"},
    {"%4G", "%4G"},
    {"%g", "%g"},
    {"%%", "%"},
    {"%%%", "%%"},
    {"%%41", "%A"},
    {"%4%41", "%4A"},
    {"%4%", "%4"},
    {"% 41", "% 41"},
    {"%4 1", "%4 1"},
    {"%\xe9 4", "%\xe9 4"},
    {"%4\xe9", "%4\xe9"},
    {std::string("%\0", 2), std::string("%\0", 2)},
    {std::string("%4\0", 3), std::string("%4\0", 3)},
    {"%-1", "%-1"},
    // Once only.
    {"%2541", "%41"},
    {"%252F", "%2F"},
    {"%2F", "/"},
};

TEST(URIunEscape, DecodesOrKeepsEveryEscape) {
  checkTexts(URIunEscape, URIunEscape, percentDecoding);
}

TEST(URIunEscape, DropsAPercentSignAtTheEnd) {
  EXPECT_EQ(URIunEscape("100%"), "100");
}

TEST(URIunEscape, DecodesTheExampleOfItsContract) {
  EXPECT_EQ(URIunEscape("%41%4G%4"), "A%4G");
}

TEST(URIunEscape, StopsAtTheLengthEvenInsideAnEscape) {
  EXPECT_EQ(URIunEscape("%41", 0), "");
  EXPECT_EQ(URIunEscape("%41", 1), "");
  EXPECT_EQ(URIunEscape("%41", 2), "");
  EXPECT_EQ(URIunEscape("%41", 3), "A");
  EXPECT_EQ(URIunEscape("ab", 1), "a");
}

TEST(URIunEscape, UndoesURIescapeForAllBytes) {
  std::string all;
  for (int c = 0; c < 256; c++) {
    all += static_cast<char>(static_cast<unsigned char>(c));
  }
  EXPECT_EQ(URIunEscape(URIescape(all)), all);
}

TEST(cookieUnEscape, DecodesLikeURIunEscape) {
  checkTexts(cookieUnEscape, cookieUnEscape, percentDecoding);
}

// --- Cookies and the like ------------------------------------------------------

TEST(cookieEscape, TreatsEveryByteByItsRule) {
  const char* const rows[16] = {
      "%0%1%2%3%4%5%6%7%8%9%A%B%C%D%E%F",
      "%10%11%12%13%14%15%16%17%18%19%1A%1B%1C%1D%1E%1F",
      "%20%21%22%23%24%25%26%27%28%29%2A%2B%2C%2D%2E%2F",
      "0123456789%3A%3B%3C%3D%3E%3F",
      "%40ABCDEFGHIJKLMNO",
      "PQRSTUVWXYZ%5B%5C%5D%5E%5F",
      "%60abcdefghijklmno",
      "pqrstuvwxyz%7B%7C%7D%7E%7F",
      "\200\201\202\203\204\205\206\207\210\211\212\213\214\215\216\217",
      "\220\221\222\223\224\225\226\227\230\231\232\233\234\235\236\237",
      "\240\241\242\243\244\245\246\247\250\251\252\253\254\255\256\257",
      "\260\261\262\263\264\265\266\267\270\271\272\273\274\275\276\277",
      "\300\301\302\303\304\305\306\307\310\311\312\313\314\315\316\317",
      "\320\321\322\323\324\325\326\327\330\331\332\333\334\335\336\337",
      "\340\341\342\343\344\345\346\347\350\351\352\353\354\355\356\357",
      "\360\361\362\363\364\365\366\367\370\371\372\373\374\375\376\377",
  };
  checkAllBytes(cookieEscape, cookieEscape, rows);
}

TEST(cookieEscape, DoesNotPadControlBytes) {
  const textCase cases[] = {
      {"", ""},
      {"\t", "%9"},
      {"a\tb", "a%9b"},
      {"\n\r", "%A%D"},
      {"a b", "a%20b"},
      {"caf\xc3\xa9", "caf\xc3\xa9"},
      {"a=1;b", "a%3D1%3Bb"},
      {"~", "%7E"},
      {"\x7f", "%7F"},
      {std::string("a\0b", 3), "a%0b"},
  };
  checkTexts(cookieEscape, cookieEscape, cases);
}

TEST(QMXescape, TreatsEveryByteByItsRule) {
  const char* const rows[16] = {
      "\001\002\003\004\005\006\007\010\t%0A\013\014\015\016\017",
      "\020\021\022\023\024\025\026\027\030\031\032\033\034\035\036\037",
      " %21%22%23%24%25%26%27%28%29%2A%2B%2C%2D%2E%2F",
      "0123456789%3A%3B%3C%3D%3E%3F",
      "%40ABCDEFGHIJKLMNO",
      "PQRSTUVWXYZ%5B%5C%5D%5E%5F",
      "%60abcdefghijklmno",
      "pqrstuvwxyz%7B%7C%7D%7E\177",
      "\200\201\202\203\204\205\206\207\210\211\212\213\214\215\216\217",
      "\220\221\222\223\224\225\226\227\230\231\232\233\234\235\236\237",
      "\240\241\242\243\244\245\246\247\250\251\252\253\254\255\256\257",
      "\260\261\262\263\264\265\266\267\270\271\272\273\274\275\276\277",
      "\300\301\302\303\304\305\306\307\310\311\312\313\314\315\316\317",
      "\320\321\322\323\324\325\326\327\330\331\332\333\334\335\336\337",
      "\340\341\342\343\344\345\346\347\350\351\352\353\354\355\356\357",
      "\360\361\362\363\364\365\366\367\370\371\372\373\374\375\376\377",
  };
  // The first row begins with a NUL byte, which is copied.
  for (unsigned int row = 0; row < 16; row++) {
    SCOPED_TRACE(testing::Message() << "bytes from " << row * 16);
    std::string bytes;
    for (unsigned int i = 0; i < 16; i++) {
      bytes += static_cast<char>(static_cast<unsigned char>(row * 16 + i));
    }
    const std::string expected = row == 0 ? std::string(1, '\0') + rows[0] : rows[row];
    EXPECT_EQ(QMXescape(bytes), expected);
    EXPECT_EQ(QMXescape(bytes.data(), 16), expected);
  }
}

TEST(QMXescape, KeepsBlanksAndEncodesPunctuation) {
  const textCase cases[] = {
      {"", ""},
      {"a b", "a b"},
      {"a\nb", "a%0Ab"},
      {"a\tb\r", "a\tb\r"},
      {"x=1,y=2", "x%3D1%2Cy%3D2"},
      {"caf\xc3\xa9!", "caf\xc3\xa9%21"},
      {"\x7f", "\x7f"},
  };
  checkTexts(QMXescape, QMXescape, cases);
}

// --- Directory names -----------------------------------------------------------

TEST(LDAPescape, TreatsEveryByteByItsRule) {
  const char* const rows[16] = {
      "\\00\\01\\02\\03\\04\\05\\06\\07\\08\\09\\0A\\0B\\0C\\0D\\0E\\0F",
      "\\10\\11\\12\\13\\14\\15\\16\\17\\18\\19\\1A\\1B\\1C\\1D\\1E\\1F",
      " !\\\"#$%&'()*\\+\\,-./",
      "0123456789:\\;\\<=\\>?",
      "@ABCDEFGHIJKLMNO",
      "PQRSTUVWXYZ[\\\\]^_",
      "`abcdefghijklmno",
      "pqrstuvwxyz{|}~\\7F",
      "\\80\\81\\82\\83\\84\\85\\86\\87\\88\\89\\8A\\8B\\8C\\8D\\8E\\8F",
      "\\90\\91\\92\\93\\94\\95\\96\\97\\98\\99\\9A\\9B\\9C\\9D\\9E\\9F",
      "\\A0\\A1\\A2\\A3\\A4\\A5\\A6\\A7\\A8\\A9\\AA\\AB\\AC\\AD\\AE\\AF",
      "\\B0\\B1\\B2\\B3\\B4\\B5\\B6\\B7\\B8\\B9\\BA\\BB\\BC\\BD\\BE\\BF",
      "\\C0\\C1\\C2\\C3\\C4\\C5\\C6\\C7\\C8\\C9\\CA\\CB\\CC\\CD\\CE\\CF",
      "\\D0\\D1\\D2\\D3\\D4\\D5\\D6\\D7\\D8\\D9\\DA\\DB\\DC\\DD\\DE\\DF",
      "\\E0\\E1\\E2\\E3\\E4\\E5\\E6\\E7\\E8\\E9\\EA\\EB\\EC\\ED\\EE\\EF",
      "\\F0\\F1\\F2\\F3\\F4\\F5\\F6\\F7\\F8\\F9\\FA\\FB\\FC\\FD\\FE\\FF",
  };
  checkAllBytes(LDAPescape, LDAPescape, rows);
}

TEST(LDAPescape, EscapesWholeTexts) {
  const textCase cases[] = {
      {"", ""},
      {"plain text", "plain text"},
      {"Smith, John", "Smith\\, John"},
      {"a+b", "a\\+b"},
      {"\"q\"", "\\\"q\\\""},
      {"a\\b", "a\\\\b"},
      {"<x>;", "\\<x\\>\\;"},
      {"\n", "\\0A"},
      {"\x1f", "\\1F"},
      {"caf\xc3\xa9", "caf\\C3\\A9"},
      {"a=b#c", "a=b#c"},
      {std::string("a\0b", 3), "a\\00b"},
  };
  checkTexts(LDAPescape, LDAPescape, cases);
}

TEST(LDAPunEscape, DecodesOrDropsEveryEscape) {
  const textCase cases[] = {
      {"", ""},
      {"plain", "plain"},
      {"\xe9", "\xe9"},
      {"%41+", "%41+"},
      {"\\41", "A"},
      {"x\\41y", "xAy"},
      {"\\c3\\A9", "\xc3\xa9"},
      {"\\00", std::string(1, '\0')},
      {"\\ff", "\xff"},
      // A backslash before something that is not a digit.
      {"\\,", ","},
      {"\\\\", "\\"},
      {"\\\\41", "\\41"},
      {"\\g1", "g1"},
      {"\\ 41", " 41"},
      {"\\\xe9", "\xe9"},
      {std::string("\\\0", 2), std::string(1, '\0')},
      // A digit and something that is not a digit: both are dropped.
      {"\\4G", "G"},
      {"a\\4Gb", "aGb"},
      {"\\4\\41", "\\41"},
      {"\\a,b", ",b"},
      {"\\4\xe9", "\xe9"},
      // The end of the text within an escape.
      {"\\", ""},
      {"a\\", "a"},
      {"\\4", ""},
      {"a\\4", "a"},
      {"\\41\\", "A"},
      {"\\41\\f", "A"},
      {"\\\\\\", "\\"},
  };
  checkTexts(LDAPunEscape, LDAPunEscape, cases);
}

TEST(LDAPunEscape, UndoesLDAPescapeForAllBytes) {
  std::string all;
  for (int c = 0; c < 256; c++) {
    all += static_cast<char>(static_cast<unsigned char>(c));
  }
  EXPECT_EQ(LDAPunEscape(LDAPescape(all)), all);
}

// --- Script strings ------------------------------------------------------------

TEST(javaScriptEscape, TreatsEveryByteByItsRule) {
  // Bytes of 128 and above are alone here, so they are no UTF-8 sequences and
  // count as the code points of their values.
  const char* const rows[16] = {
      "\\u000\\u001\\u002\\u003\\u004\\u005\\u006\\u007\\u008\\u009\\u00A\\u00B\\u00C\\u00D\\u00E\\"
      "u00F",
      "\\u0010\\u0011\\u0012\\u0013\\u0014\\u0015\\u0016\\u0017\\u0018\\u0019\\u001A\\u001B\\u001C"
      "\\u001D\\u001E\\u001F",
      " !\"#$%&\\'()*+,-./",
      "0123456789:;<=>?",
      "@ABCDEFGHIJKLMNO",
      "PQRSTUVWXYZ[\\]^_",
      "`abcdefghijklmno",
      "pqrstuvwxyz{|}~\\u007F",
      "\\u0080\\u0081\\u0082\\u0083\\u0084\\u0085\\u0086\\u0087\\u0088\\u0089\\u008A\\u008B\\u008C"
      "\\u008D\\u008E\\u008F",
      "\\u0090\\u0091\\u0092\\u0093\\u0094\\u0095\\u0096\\u0097\\u0098\\u0099\\u009A\\u009B\\u009C"
      "\\u009D\\u009E\\u009F",
      "\\u00A0\\u00A1\\u00A2\\u00A3\\u00A4\\u00A5\\u00A6\\u00A7\\u00A8\\u00A9\\u00AA\\u00AB\\u00AC"
      "\\u00AD\\u00AE\\u00AF",
      "\\u00B0\\u00B1\\u00B2\\u00B3\\u00B4\\u00B5\\u00B6\\u00B7\\u00B8\\u00B9\\u00BA\\u00BB\\u00BC"
      "\\u00BD\\u00BE\\u00BF",
      "\\u00C0\\u00C1\\u00C2\\u00C3\\u00C4\\u00C5\\u00C6\\u00C7\\u00C8\\u00C9\\u00CA\\u00CB\\u00CC"
      "\\u00CD\\u00CE\\u00CF",
      "\\u00D0\\u00D1\\u00D2\\u00D3\\u00D4\\u00D5\\u00D6\\u00D7\\u00D8\\u00D9\\u00DA\\u00DB\\u00DC"
      "\\u00DD\\u00DE\\u00DF",
      "\\u00E0\\u00E1\\u00E2\\u00E3\\u00E4\\u00E5\\u00E6\\u00E7\\u00E8\\u00E9\\u00EA\\u00EB\\u00EC"
      "\\u00ED\\u00EE\\u00EF",
      "\\u00F0\\u00F1\\u00F2\\u00F3\\u00F4\\u00F5\\u00F6\\u00F7\\u00F8\\u00F9\\u00FA\\u00FB\\u00FC"
      "\\u00FD\\u00FE\\u00FF",
  };
  checkAllBytes(javaScriptEscape, javaScriptEscape, rows);
}

TEST(javaScriptEscape, WritesCodePointsWithThreeToSixDigits) {
  const textCase cases[] = {
      {"", ""},
      {"\n", "\\u00A"},
      {"\x0f", "\\u00F"},
      {"\x10", "\\u0010"},
      {"a\nb", "a\\u00Ab"},
      {"it's", "it\\'s"},
      {"\"\\/<>&", "\"\\/<>&"},
      {"~", "~"},
      {"\x7f", "\\u007F"},
      {"\xc2\x80", "\\u0080"},                 // U+0080
      {"caf\xc3\xa9!", "caf\\u00E9!"},         // U+00E9
      {"\xc3\xbf", "\\u00FF"},                 // U+00FF
      {"\xc4\x80", "\\u0100"},                 // U+0100
      {"\xce\xa9\xce\xa9", "\\u03A9\\u03A9"},  // U+03A9 twice
      {"\xe0\xbf\xbf", "\\u0FFF"},             // U+0FFF
      {"\xe1\x80\x80", "\\u1000"},             // U+1000
      {"\xe2\x82\xac", "\\u20AC"},             // U+20AC
      {"\xef\xbf\xbf", "\\uFFFF"},             // U+FFFF
      {"\xf0\x90\x80\x80", "\\u10000"},        // U+10000
      {"\xf0\x9f\x98\x80x", "\\u1F600x"},      // U+1F600
      {"\xf4\x80\x80\x80", "\\u100000"},       // U+100000
      {"\xf4\x8f\xbf\xbf", "\\u10FFFF"},       // U+10FFFF
      // Malformed sequences, byte by byte.
      {"\xc0\x80", "\\u00C0\\u0080"},
      {"\xe0\x80\x80", "\\u00E0\\u0080\\u0080"},
      {"\xed\xa0\x80", "\\u00ED\\u00A0\\u0080"},
      {"\xf4\x90\x80\x80", "\\u00F4\\u0090\\u0080\\u0080"},
      {"\xc3x", "\\u00C3x"},
      {"\xe2\x82", "\\u00E2\\u0082"},
      {"\xe2\x82x", "\\u00E2\\u0082x"},
      {std::string("a\0b", 3), "a\\u000b"},
  };
  checkTexts(javaScriptEscape, javaScriptEscape, cases);
}

TEST(javaScriptEscape, DoesNotCompleteASequenceFromBehindTheLength) {
  EXPECT_EQ(javaScriptEscape("\xc3\xa9", 1), "\\u00C3");
  EXPECT_EQ(javaScriptEscape("\xe2\x82\xac", 2), "\\u00E2\\u0082");
}

// --- HTML ----------------------------------------------------------------------

TEST(HTMLescape, TreatsEveryByteByItsRule) {
  // Bytes of 128 and above are alone here, as above.
  const char* const rows[16] = {
      "&#0;&#1;&#2;&#3;&#4;&#5;&#6;&#7;&#8;&#9;<br>&#11;&#12;&#13;&#14;&#15;",
      "&#16;&#17;&#18;&#19;&#20;&#21;&#22;&#23;&#24;&#25;&#26;&#27;&#28;&#29;&#30;&#31;",
      " !&quot;#$%&amp;'()*+,-./",
      "0123456789:;&lt;=&gt;?",
      "@ABCDEFGHIJKLMNO",
      "PQRSTUVWXYZ[\\]^_",
      "`abcdefghijklmno",
      "pqrstuvwxyz{|}~&#127;",
      "&#128;&#129;&#130;&#131;&#132;&#133;&#134;&#135;&#136;&#137;&#138;&#139;&#140;&#141;&#142;&#"
      "143;",
      "&#144;&#145;&#146;&#147;&#148;&#149;&#150;&#151;&#152;&#153;&#154;&#155;&#156;&#157;&#158;&#"
      "159;",
      "&#160;&#161;&#162;&#163;&#164;&#165;&#166;&#167;&#168;&#169;&#170;&#171;&#172;&#173;&#174;&#"
      "175;",
      "&#176;&#177;&#178;&#179;&#180;&#181;&#182;&#183;&#184;&#185;&#186;&#187;&#188;&#189;&#190;&#"
      "191;",
      "&#192;&#193;&#194;&#195;&#196;&#197;&#198;&#199;&#200;&#201;&#202;&#203;&#204;&#205;&#206;&#"
      "207;",
      "&#208;&#209;&#210;&#211;&#212;&#213;&#214;&#215;&#216;&#217;&#218;&#219;&#220;&#221;&#222;&#"
      "223;",
      "&#224;&#225;&#226;&#227;&#228;&#229;&#230;&#231;&#232;&#233;&#234;&#235;&#236;&#237;&#238;&#"
      "239;",
      "&#240;&#241;&#242;&#243;&#244;&#245;&#246;&#247;&#248;&#249;&#250;&#251;&#252;&#253;&#254;&#"
      "255;",
  };
  checkAllBytes(htmlWithoutNbsp, htmlBytesWithoutNbsp, rows);
}

TEST(HTMLescape, WritesReferences) {
  const textCase cases[] = {
      {"", ""},
      {"a<b>c", "a&lt;b&gt;c"},
      {"\"&'", "&quot;&amp;'"},
      {"a\nb\n", "a<br>b<br>"},
      {"\r\n\t", "&#13;<br>&#9;"},
      {"&lt;", "&amp;lt;"},
      {"\x7f", "&#127;"},
      {"caf\xc3\xa9", "caf&#233;"},
      {"\xe2\x82\xac"
       "5",
       "&#8364;5"},
      {"\xf0\x9f\x98\x80", "&#128512;"},
      {"\xf4\x8f\xbf\xbf", "&#1114111;"},
      {"\xc2\xa0", "&#160;"},
      {"\xc0\x80", "&#192;&#128;"},
      {"\xed\xa0\x80", "&#237;&#160;&#128;"},
      {"\xe2\x82", "&#226;&#130;"},
      {"\xe2\x82<", "&#226;&#130;&lt;"},
      {"    ", "    "},
      {std::string("a\0b", 3), "a&#0;b"},
  };
  checkTexts(htmlWithoutNbsp, htmlBytesWithoutNbsp, cases);
}

TEST(HTMLescape, JoinsPairsOfBlanksOnRequest) {
  const textCase cases[] = {
      {" ", " "},
      {"  ", " &nbsp;"},
      {"   ", " &nbsp; "},
      {"    ", " &nbsp; &nbsp;"},
      {"     ", " &nbsp; &nbsp; "},
      {"a b", "a b"},
      {"a  b", "a &nbsp;b"},
      {"a  <", "a &nbsp;&lt;"},
      {" a ", " a "},
      {"a \n b", "a <br> b"},
      {" \t ", " &#9; "},
      {"x<  \xc3\xa9", "x&lt; &nbsp;&#233;"},
  };
  for (const textCase& entry : cases) {
    SCOPED_TRACE(testing::Message() << "text \"" << entry.text << "\"");
    EXPECT_EQ(HTMLescape(entry.text, true), entry.expected);
    EXPECT_EQ(HTMLescape(entry.text.data(), static_cast<unsigned int>(entry.text.size()), true),
              entry.expected);
    EXPECT_EQ(HTMLescape(std::string(entry.text), false).find("&nbsp;"), std::string::npos);
  }
}

TEST(HTMLescape, DoesNotPairABlankWithOneBehindTheLength) {
  EXPECT_EQ(HTMLescape("a  b", 2, true), "a ");
  EXPECT_EQ(HTMLescape("\xc3\xa9", 1, true), "&#195;");
}

}  // namespace

}  // namespace html_escape_test
