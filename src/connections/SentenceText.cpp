#include "connections/SentenceText.h"

namespace kelvox {
namespace {

std::size_t startOf(std::string_view line)
{
    if (!line.empty() && (line.front() == '$' || line.front() == '!'))
        return 0;
    return line.find_first_of("$!");
}

} // namespace

std::string_view sentenceFromStart(std::string_view line)
{
    const auto start = startOf(line);
    return start == std::string_view::npos ? line : line.substr(start);
}

bool hasSentenceStart(std::string_view line)
{
    return startOf(line) != std::string_view::npos;
}

std::uint8_t sentenceChecksum(std::string_view sentence)
{
    const auto text = sentence.substr(0, sentence.find('*'));
    std::uint8_t sum = 0;
    for (const char c : text.substr(text.empty() ? 0 : 1))
        sum = static_cast<std::uint8_t>(sum ^ static_cast<std::uint8_t>(c));
    return sum;
}

std::string completeSentence(std::string_view sentence, AddChecksum add)
{
    while (!sentence.empty() && (sentence.back() == '\n' || sentence.back() == '\r'))
        sentence.remove_suffix(1);
    std::string line(sentence);
    if (add == AddChecksum::Yes && sentence.find('*') == std::string_view::npos) {
        constexpr std::string_view digits = "0123456789ABCDEF";
        const auto sum = sentenceChecksum(sentence);
        line += {'*', digits[sum >> 4], digits[sum & 15]};
    }
    line += "\r\n";
    return line;
}

} // namespace kelvox
