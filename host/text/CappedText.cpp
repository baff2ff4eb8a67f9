#include "text/CappedText.h"

#include <algorithm>

namespace host
{

std::streamsize CappedText::xsputn(const char* from, std::streamsize count)
{
    std::for_each(from, from + count, [this](char c) { Add(c); });
    return count;
}

CappedText::int_type CappedText::overflow(int_type c)
{
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        Add(traits_type::to_char_type(c));
    }
    return traits_type::not_eof(c);
}

void CappedText::Add(char c)
{
    if (!isFull && text.size() < most) {
        text += c;
        return;
    }
    if (!isFull) { // the line that is too much goes as a whole
        isFull = true;
        text.resize(text.rfind('\n') + 1);
    }
    leftOut += c == '\n' ? 1 : 0;
}

} // namespace host
