// Text helpers of the qomath program: the library's texts are single-byte
// Windows-1252; everything the program prints is UTF-8.
#pragma once

#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

namespace qomath::cli {

// Appends code point cp as UTF-8.
inline void append_utf8(std::string& out, char32_t cp)
{
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

// Windows-1252 to UTF-8. The five bytes Windows-1252 leaves undefined
// (0x81, 0x8D, 0x8F, 0x90, 0x9D) become U+FFFD.
inline std::string cp1252_to_utf8(std::string_view in)
{
    static constexpr char32_t k80[32] = {
        0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178,
    };
    std::string out;
    out.reserve(in.size() + 8);
    for (const char ch : in) {
        const auto b = static_cast<unsigned char>(ch);
        if (b < 0x80)
            out.push_back(ch);
        else if (b < 0xA0)
            append_utf8(out, k80[b - 0x80]);
        else
            append_utf8(out, b);
    }
    return out;
}

// The text without trailing blanks, tabs, CR and LF (the readers keep a CR
// of CR LF files and pad information lines with blanks).
inline std::string_view trim_right(std::string_view s)
{
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r' || s.back() == '\n'))
        s.remove_suffix(1);
    return s;
}

// A UTF-8 text made safe for a terminal: control characters become blanks.
inline std::string printable(std::string_view utf8)
{
    std::string out(utf8);
    for (char& c : out) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x20 || b == 0x7F) c = ' ';
    }
    return out;
}

// A JSON string literal (quotes included) of a UTF-8 text.
inline std::string json_string(std::string_view utf8)
{
    std::string out;
    out.reserve(utf8.size() + 2);
    out.push_back('"');
    for (const char c : utf8) {
        const auto b = static_cast<unsigned char>(c);
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (b < 0x20 || b == 0x7F) {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned>(b));
                out += buf;
            } else {
                out.push_back(c);
            }
        }
    }
    out.push_back('"');
    return out;
}

// A CSV field: quoted (quotes doubled) when it holds a comma, a quote, CR or LF.
inline std::string csv_field(std::string_view utf8)
{
    if (utf8.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(utf8);
    std::string out = "\"";
    for (const char c : utf8) {
        if (c == '"') out.push_back('"');
        out.push_back(c);
    }
    out.push_back('"');
    return out;
}

// XML character data or attribute value of a UTF-8 text.
inline std::string xml_escape(std::string_view utf8)
{
    std::string out;
    out.reserve(utf8.size());
    for (const char c : utf8) {
        switch (c) {
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '&': out += "&amp;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&apos;"; break;
        default:
            if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n')
                out.push_back(' ');
            else
                out.push_back(c);
        }
    }
    return out;
}

// A number with up to `digits` significant digits, '.' as decimal point
// (the program never changes the C locale); "" when not finite.
inline std::string number(double v, int digits = 9)
{
    if (!std::isfinite(v)) return {};
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.*g", digits, v);
    return buf;
}

}  // namespace qomath::cli
