// Decodes many messages on all cores: lines "FUNCTION LENGTH HEX" on standard input, and in their
// order what each is. Each thread has a message of its own, which it uses again and again.

#include <algorithm>
#include <atomic>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include <quorvane/message.h>

struct Line {
    std::string function;
    std::vector<std::uint8_t> octets;
    std::string answer;
};

void Answer(Line& line, quorvane::Message& message) {
    const auto decoding = quorvane::FindDecoding(line.function);
    if (decoding && message.Decode(*decoding, line.octets))
        line.answer = std::string(message.TypeName());
    else
        line.answer = "unknown";
}

int main() {
    std::vector<Line> lines;
    for (std::string function, length, hex; std::cin >> function >> length >> hex;) {
        Line& line = lines.emplace_back();
        line.function = function;
        for (std::size_t at = 0; at + 1 < hex.size(); at += 2)
            line.octets.push_back(
                static_cast<std::uint8_t>(std::stoul(hex.substr(at, 2), nullptr, 16)));
    }

    // A thread takes the next lines that nobody has taken; some at a time, as a line is soon done.
    constexpr std::size_t kLinesAtATime = 64;
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        quorvane::Message message;
        for (std::size_t first; (first = next.fetch_add(kLinesAtATime)) < lines.size();)
            for (std::size_t at = first; at < std::min(first + kLinesAtATime, lines.size()); ++at)
                Answer(lines[at], message);
    };
    std::vector<std::thread> threads;
    for (unsigned count = std::max(1U, std::thread::hardware_concurrency()); count > 0; --count)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();

    for (const Line& line : lines)
        std::cout << line.function << " " << line.answer << "\n";
}
