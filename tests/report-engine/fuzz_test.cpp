// A short run over templates that were damaged at random: none may do more than fail.
#include <gtest/gtest.h>
#include <random>
#include <unistd.h>

#include "fuzz_reports.h"
#include "report_support.h"

using namespace reports;

namespace {

constexpr const char *names[] = {"slist", "kblam", "bjou", "bil", "guv", "ustva", "kpla", "oplst", "vprob"};

std::string SeedOf(size_t number)
{
    return std::string(1, static_cast<char>(number)) +
           ReadFile(ShippedTemplate("or_" + std::string(names[number]) + ".rs")) + "\n--\n" +
           std::string("\0\x08\x01\x02\x03\x04\x05\x06\x07\x01\x02\x02\x02\x01\x02", 15);
}

void Damage(std::string &text, std::mt19937 &random)
{
    constexpr const char *words[] = {"0",
                                     "-1",
                                     "9223372036854775807",
                                     "1e308",
                                     "nil",
                                     "{}",
                                     "'x'",
                                     "true",
                                     "groupsum",
                                     "..",
                                     "while true do end ",
                                     "row",
                                     "add",
                                     "head{}",
                                     "error",
                                     "function() end",
                                     "\xFF\n",
                                     "(((((",
                                     "level=1,",
                                     "keep=true,newpage=true,level=2,"};
    const auto at = [&] { return static_cast<size_t>(random()) % (text.size() + 1); };
    for (unsigned left = 1 + random() % 4; left > 0; --left) {
        const size_t begin = at();
        switch (random() % 6) {
        case 0: text.insert(begin, words[random() % (sizeof words / sizeof words[0])]); break;
        case 1: text.erase(begin, random() % 40); break;
        case 2:
            if (begin < text.size()) text[begin] = static_cast<char>(random());
            break;
        case 3: text.insert(begin, text.substr(at(), random() % 200)); break;
        case 4: { // another number in the place of one
            const size_t digit = text.find_first_of("0123456789", begin);
            if (digit == std::string::npos) break;
            text.replace(digit, text.find_first_not_of("0123456789", digit) - digit,
                         std::to_string(random() % 3000));
            break;
        }
        default: text.append(1 + random() % 30, static_cast<char>(random() % 10)); break;
        }
    }
}

} // namespace

TEST(Fuzz, DamagedTemplatesAndRecordsOnlyFail)
{
    constexpr unsigned seed = 7;
    LowerLimits();
    std::mt19937 random(seed);
    const Directory directory;
    const std::string pdf = directory.At("a.pdf");
    int sound = 0;
    int drawn = 0;
    testing::internal::CaptureStderr();
    for (size_t number = 0; number < std::size(names); ++number) {
        const std::string text = SeedOf(number);
        EXPECT_TRUE(RunReport(reinterpret_cast<const uint8_t *>(text.data()), text.size())) << names[number];
    }
    for (int round = 0; round < 1500; ++round) {
        std::string text = SeedOf(random() % std::size(names));
        Damage(text, random);
        const bool isDrawn = sound % 25 == 24 && drawn <= sound / 25;
        if (isDrawn) ++drawn;
        if (RunReport(reinterpret_cast<const uint8_t *>(text.data()), text.size(), isDrawn ? pdf : ""))
            ++sound;
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(sound, 200) << "damage that leaves nothing to run tests nothing";
    EXPECT_GT(drawn, 5);
}
