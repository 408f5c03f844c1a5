// The README's program does what it says on the sample books.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;

// Runs a command; gives what it writes and its exit code.
std::string OutputOf(const std::string &command, int *exitCode)
{
    std::string output;
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return "cannot be run";
    char buffer[4096];
    size_t count = 0;
    while ((count = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, count);
    }
    *exitCode = WEXITSTATUS(pclose(pipe));
    return output;
}

class Example : public testing::Test {
protected:
    void SetUp() override
    {
        books = (fs::temp_directory_path() / "vark-example-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(books.data()));
    }
    void TearDown() override { fs::remove_all(books); }

    std::string Buchen(int *exitCode) const
    {
        return OutputOf("VARK_CONFIG_DIR='" + books + "' VARK_UI=headless '" VARK_BUCHEN "'", exitCode);
    }

    std::string books;
};

} // namespace

TEST_F(Example, PostsIntoTheSampleBooks)
{
    int exitCode = -1;
    const std::string made = OutputOf("'" VARK_BOOKS "' beispiel '" + books + "'", &exitCode);
    ASSERT_EQ(0, exitCode) << made;
    EXPECT_EQ("gebucht (1)\n", Buchen(&exitCode));
    EXPECT_EQ(0, exitCode);
}

TEST_F(Example, IsRefusedWithoutBooks)
{
    int exitCode = -1;
    EXPECT_EQ("abgelehnt (-36)\n", Buchen(&exitCode));
    EXPECT_EQ(1, exitCode);
}
