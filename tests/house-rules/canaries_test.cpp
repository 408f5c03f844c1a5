// Each rule fails where it should: an offending text beside one that is as it should be.
#include "rules.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using namespace house;

namespace {

// What a rule says of a tree of one file.
std::string Said(Breaches (*rule)(const Files &), const std::string &path, const std::string &text)
{
    std::string said;
    for (const Breach &breach : rule({{path, text}})) {
        said += std::to_string(breach.Line) + ": " + breach.Why + "\n";
    }
    return said;
}

// What the layer rule says of `from` including `to`, both in the tree.
std::string SaidOfInclude(const std::string &from, const std::string &to)
{
    std::string said;
    for (const Breach &breach : Layers({{from, "#include \"" + to + "\"\n"}, {to, ""}})) {
        said += breach.Why;
    }
    return said;
}

} // namespace

TEST(Reading, CodeIsWhatRemainsWithoutCommentsAndLiterals)
{
    EXPECT_EQ("a      b", CodeOf("a /*x*/b"));
    EXPECT_EQ("a     \nb", CodeOf("a // x\nb"));
    EXPECT_EQ("f(\"  \", ' ')", CodeOf("f(\"a\\\"\", 'x')").replace(2, 5, "\"  \""));
    EXPECT_EQ("1'000 + 2", CodeOf("1'000 + 2"));
    EXPECT_EQ("R\"       \" + x", CodeOf("R\"X(a\"b)X\" + x"));
}

TEST(Reading, LiteralsAreJoinedAndKeepTheirSuffix)
{
    const auto literals = LiteralsOf("f(\"a\"\n  \"b\"_w, \"c\");\n#include \"d.h\"\ng(\"e\");");
    ASSERT_EQ(3u, literals.size());
    EXPECT_EQ("ab", literals[0].Text);
    EXPECT_EQ("_w", literals[0].Suffix);
    EXPECT_EQ("c", literals[1].Text);
    EXPECT_EQ("", literals[1].Suffix);
    EXPECT_EQ("e", literals[2].Text);
    EXPECT_EQ(4, literals[2].Line);
}

TEST(Reading, IncludesInCommentsDoNotCount)
{
    const auto includes =
        IncludesOf("// #include \"a.h\"\n#include \"b.h\"\n#  include <c>\n/*\n#include <d>\n*/\n");
    ASSERT_EQ(2u, includes.size());
    EXPECT_EQ("b.h", includes[0].Target);
    EXPECT_TRUE(includes[0].Quoted);
    EXPECT_EQ("c", includes[1].Target);
    EXPECT_FALSE(includes[1].Quoted);
    EXPECT_EQ(3, includes[1].Line);
}

TEST(LayerRule, RefusesArrowsUpwardsAndSideways)
{
    const struct {
        const char *From;
        const char *To;
        bool Allowed;
    } rows[] = {
        {"src/booking/a.cpp", "src/values/b.h", true},
        {"src/values/a.cpp", "src/booking/b.h", false},
        {"src/booking/a.cpp", "src/booking/b.h", true},
        {"src/model/a.h", "src/model/b.h", true},
        {"src/model/a.h", "text/b.h", false},
        {"src/model/a.h", "include/vark40.h", false},
        {"src/frame/a.h", "include/vark40.h", true},
        {"src/frame/a.h", "src/values/b.h", false},
        {"src/frame/a.h", "src/platform/b.h", true},
        {"src/reports/tax/a.cpp", "src/reports/frame/b.h", true},
        {"src/reports/frame/a.cpp", "src/reports/tax/b.h", false},
        {"src/reports/tax/a.cpp", "src/reports/cost/b.h", false},
        {"src/reports/tax/a.cpp", "src/reports/tax/b.h", true},
        {"src/platform/linux/a.cpp", "record-manager/include/btrcall.h", true},
        {"src/platform/linux/a.cpp", "record-manager/store.h", false},
        {"src/frame/a.cpp", "tools/b.h", false},
        {"src/elsewhere/a.cpp", "src/model/b.h", false},
        {"src/a.cpp", "src/frame/b.h", true},
        {"src/frame/a.cpp", "src/b.h", false},
        {"record-manager/a.cpp", "record-manager/b.h", true},
        {"record-manager/a.cpp", "text/b.h", true},
        {"record-manager/a.cpp", "host/b.h", true},
        {"record-manager/a.cpp", "src/model/b.h", false},
        {"record-manager/a.cpp", "window-system/include/varkui.h", false},
        {"report-engine/a.cpp", "window-system/include/varkui.h", true},
        {"report-engine/a.cpp", "window-system/window.h", false},
        {"window-system/windows/a.cpp", "window-system/model/b.h", true},
        {"window-system/model/a.cpp", "window-system/windows/b.h", false},
        {"window-system/model/a.cpp", "window-system/start.h", false},
        {"window-system/model/a.h", "window-system/include/varkui.h", true},
        {"window-system/start.cpp", "window-system/front-ends/b.h", true},
        {"window-system/ui/a.cpp", "window-system/front-ends/protocol.h", true},
        {"window-system/ui/a.cpp", "window-system/model/b.h", false},
        {"text/a.h", "src/model/b.h", false},
        {"text/a.h", "host/b.h", false},
        {"host/a.cpp", "text/b.h", true},
        {"host/a.cpp", "src/platform/b.h", false},
        {"src/platform/linux/a.cpp", "host/b.h", true},
        {"tools/a.cpp", "include/vark40.h", true},
        {"tools/a.cpp", "src/model/b.h", true},
        {"tools/a.cpp", "src/values/b.h", true},
        {"tools/a.cpp", "src/booking/b.h", false},
        {"tools/a.cpp", "record-manager/store.h", false},
        {"examples/a.c", "src/model/b.h", false},
        {"include/vark40.h", "src/model/b.h", false},
        {"tests/frame/a.cpp", "src/frame/b.h", true},
    };
    for (const auto &row : rows) {
        const std::string said = SaidOfInclude(row.From, row.To);
        EXPECT_EQ(row.Allowed, said.empty()) << row.From << " includes " << row.To << ": " << said;
    }
}

TEST(LayerRule, RefusesAnIncludeOfNothing)
{
    EXPECT_EQ("1: there is no src/model/gone.h\n",
              Said(Layers, "src/frame/a.cpp", "#include \"src/model/gone.h\"\n"));
}

TEST(LayerRule, RefusesLibraryHeadersInTheModel)
{
    EXPECT_EQ("", Said(Layers, "src/model/a.h", "#include <cstdint>\n"));
    EXPECT_NE("", Said(Layers, "src/model/a.h", "#include <cstring>\n"));
}

TEST(PlatformRule, RefusesTheOperatingSystemAboveIt)
{
    EXPECT_EQ("", Said(PlatformStaysBelow, "src/platform/linux/a.cpp", "#include <unistd.h>\n"));
    EXPECT_NE("", Said(PlatformStaysBelow, "src/frame/a.cpp", "#include <unistd.h>\n"));
    EXPECT_NE("", Said(PlatformStaysBelow, "src/platform/a.cpp", "#include <windows.h>\n"));
    EXPECT_NE("", Said(PlatformStaysBelow, "src/frame/a.cpp", "\n#ifdef _WIN32\n#endif\n"));
    EXPECT_EQ("", Said(PlatformStaysBelow, "src/frame/a.cpp", "// _WIN32\n#include <cstring>\n"));
}

TEST(CallRule, RefusesBannedCallsAndNamesWhatToUse)
{
    EXPECT_EQ("2: atoi is banned; use std::from_chars: it follows no locale and tells a bad text from 0\n",
              Said(BannedCalls, "tools/a.cpp", "\nint x = atoi(\"1\");\n"));
    EXPECT_NE("", Said(BannedCalls, "src/frame/a.cpp", "std::strcpy (a, b);"));
    EXPECT_NE("", Said(BannedCalls, "src/frame/a.cpp", "if (isdigit(a)) x();"));
    EXPECT_EQ("", Said(BannedCalls, "tools/a.cpp", "if (isdigit(a)) x();"));
    EXPECT_NE("", Said(BannedCalls, "src/frame/a.cpp", "abort();"));
    EXPECT_EQ("", Said(BannedCalls, "src/frame/a.cpp", "MyStrcpy(a, b); // strcpy(a, b)\nf(\"strcpy(\");"));
}

TEST(CallRule, RefusesFloatingPointInFormats)
{
    EXPECT_NE("", Said(BannedCalls, "src/frame/a.cpp", "F(\"%.2f\", x);"));
    EXPECT_NE("", Said(BannedCalls, "src/frame/a.cpp", "F(\"%d %lg\", x, y);"));
    EXPECT_EQ("", Said(BannedCalls, "src/frame/a.cpp", "F(\"100% frei, %d%%\", x);"));
}

TEST(CallRule, RefusesNewThatThrows)
{
    EXPECT_NE("", Said(BannedCalls, "src/frame/a.cpp", "auto *a = new Thing;"));
    EXPECT_NE("", Said(BannedCalls, "src/frame/a.cpp", "auto *a = new (place) Thing;"));
    EXPECT_EQ("", Said(BannedCalls, "src/frame/a.cpp", "auto *a = new (std::nothrow) Thing; // new one"));
    EXPECT_EQ("", Said(BannedCalls, "tools/a.cpp", "auto *a = new Thing;"));
}

TEST(PlainRule, RefusesClassesExceptionsAndThrowingContainers)
{
    EXPECT_NE("", Said(PlainCode, "src/frame/a.cpp", "class A {};"));
    EXPECT_NE("", Said(PlainCode, "record-manager/a.cpp", "struct A { virtual void F(); };"));
    EXPECT_NE("", Said(PlainCode, "window-system/a.cpp", "try { F(); } catch (...) {}"));
    EXPECT_NE("", Said(PlainCode, "src/frame/a.cpp", "#include <vector>\n"));
    EXPECT_EQ("", Said(PlainCode, "src/frame/a.cpp",
                       "enum class A { B };\ntemplate <class T, class U> void F(T);"));
    EXPECT_EQ("", Said(PlainCode, "tools/a.cpp", "#include <vector>\nclass A {};"));
}

TEST(WidthRule, CountsCharactersAndNotBytes)
{
    std::string umlauts;
    for (int i = 0; i < 110; ++i) {
        umlauts += "ü";
    }
    EXPECT_EQ("", Said(LineWidth, "src/a.h", umlauts + "\n"));
    EXPECT_EQ("2: 111 characters\n", Said(LineWidth, "src/a.h", "\n" + umlauts + "x\n"));
    EXPECT_EQ("", Said(LineWidth, "README.md", umlauts + "x\n"));
}

TEST(OrphanRule, RefusesAHeaderThatNothingIncludes)
{
    EXPECT_EQ("1: nothing includes it\n", Said(Orphans, "src/frame/a.h", ""));
    EXPECT_TRUE(
        Orphans({{"src/frame/a.h", ""}, {"src/frame/a.cpp", "#include \"src/frame/a.h\"\n"}}).empty());
}

TEST(OrphanRule, RefusesATestThatNoListNames)
{
    const SourceFile test{"tests/frame/a_test.cpp", ""};
    EXPECT_EQ("", Said(Orphans, "tests/frame/stand_in.c", ""));
    EXPECT_EQ(1u, Orphans({test}).size());
    EXPECT_EQ(1u, Orphans({test, {"tests/frame/CMakeLists.txt", "SOURCES aa_test.cpp"}}).size());
    EXPECT_TRUE(Orphans({test, {"tests/frame/CMakeLists.txt", "SOURCES a_test.cpp"}}).empty());
}

TEST(ReadmeRule, RefusesWhatIsNotSo)
{
    const std::string program = "int main(void) { return 0; }\n";
    const std::string head = "```c\n" + program + "```\n";
    const std::string model = "| `src/model/` | records |\n";
    const std::string values = "| `src/values/` | amounts |\n";
    const std::string examples = "| `examples/` | hosts |\n";
    const auto Count = [&](const std::string &readme) {
        return ReadmeIsTrue({{"README.md", readme},
                             {"examples/buchen.c", program},
                             {"src/model/a.h", ""},
                             {"src/values/b.h", ""}})
            .size();
    };
    EXPECT_EQ(0u, Count(head + examples + values + model));
    EXPECT_EQ(1u, Count(head + examples + model + values));
    EXPECT_EQ(1u, Count(head + examples + values));
    EXPECT_EQ(1u, Count(head + "| `src/booking/` | gone |\n" + examples + values + model));
    EXPECT_EQ(0u, Count(head + examples + values + model + "See `src/model/a.h`, `examples/buchen.c`.\n"));
    EXPECT_EQ(1u, Count(head + examples + values + model + "See `src/model/a.h` and `src/gone.cpp`.\n"));
    EXPECT_EQ(1u, Count("```c\nint main(void);\n```\n" + examples + values + model));
}

TEST(MessageRule, RefusesBareNumbers)
{
    for (const char *code :
         {"Report(context, 1000, c, nullptr, -1);", "Report(*context, 9, c, t, -1);",
          "ShowMessage(3112, 0, nullptr, -1);", "constexpr int question = 1803;", "return 1457;",
          "Report(context, Message::NameFehlt, -3, t, -1);", "int F() { return -3; }"}) {
        EXPECT_NE("", Said(MessagesAreNamed, "src/booking/a.cpp", code)) << code;
    }
    EXPECT_EQ("", Said(MessagesAreNamed, "src/booking/a.cpp",
                       "// after message 1408\nReport(context, Message::NameFehlt, c, nullptr, -1);"
                       "ShowMessage(number, 0, nullptr, -1); int id = 1094; return 0;"));
    EXPECT_EQ("", Said(MessagesAreNamed, "tests/a.cpp", "ShowMessage(1412, 0, nullptr, -1);"));
}

TEST(BeliefRule, RefusesFunctionsWithFewBeliefs)
{
    const std::string bare = "int F()\n{\n    return 1;\n}\nint G() { return 2; }\n";
    const std::string held = "int F()\n{\n    Holds(a);\n    ThingHolds(b);\n    return 1;\n}\n";
    EXPECT_NE("", Said(Beliefs, "src/booking/a.cpp", bare));
    EXPECT_EQ("", Said(Beliefs, "src/booking/a.cpp", held));
    EXPECT_NE("", Said(Beliefs, "src/booking/a.cpp", held + bare)) << "two in three functions";
    EXPECT_NE("", Said(Beliefs, "src/booking/a.cpp", "int F()\n{\n    // Holds(a); Holds(b)\n}\n"));
    EXPECT_EQ("", Said(Beliefs, "src/cursors/a.cpp", bare));
}

TEST(FieldRule, RefusesCopiesOfSingleNumbers)
{
    for (const char *code :
         {"std::memcpy(&number, key.Data, sizeof number);", "memcpy(&record, from, size);",
          "std::memcpy(place, &number, sizeof number);", "memcpy(out + at,\n       &header, sizeof(Header));",
          "number = *reinterpret_cast<const uint32_t *>(bytes);"}) {
        EXPECT_NE("", Said(BytesAreFields, "record-manager/lmdb/a.cpp", code)) << code;
        EXPECT_EQ("", Said(BytesAreFields, "record-manager/fields.h", code)) << code;
        EXPECT_EQ("", Said(BytesAreFields, "src/frame/a.cpp", code)) << code;
    }
    EXPECT_EQ("",
              Said(BytesAreFields, "record-manager/a.cpp",
                   "std::memcpy(to, from.Data, from.Size); std::memcpy(key.Text, \"n:\", 2);"
                   "std::memcpy(name, mark, sizeof mark); auto *p = reinterpret_cast<const uint8_t *>(x);"));
}

TEST(ContractRule, ReadsWhatDeclarationsSayOfThemselves)
{
    const auto untold = [](const std::string &text) {
        std::string names;
        const Declarations read = ReadDeclarations({{"src/frame/a.h", text}});
        for (const Breach &breach : read.Untold) {
            names += breach.Why.substr(0, breach.Why.find(' ')) + " ";
        }
        return names + std::to_string(read.Functions);
    };
    EXPECT_EQ("0", untold("#define F(x) int x(int)\nstruct A { int M(); };\nusing B = int (*)(int);\n"
                          "constexpr int c = Of(1);\nextern int (*hook)(int);\nCHECK(A, 1);\n"));
    EXPECT_EQ("1", untold("// Why.\nint F(int a);\n"));
    EXPECT_EQ("1", untold("// Of the file.\n#pragma once\n\nint F(int a);\n"));
    EXPECT_EQ("F G 2", untold("// Of the file.\n#pragma once\n\nint F(int a);\n\nint G();\n"));
    EXPECT_EQ("F 1", untold("#pragma once\n\nint F(int a);\n"));
    EXPECT_EQ("1", untold("/* Why,\n   and how. */\nconst char *F(int a,\n   int b);\n"));
    EXPECT_EQ("1", untold("int F(int a); // why\n"));
    EXPECT_EQ("3", untold("// Both.\nint F();\nint G();\nint H();\n")) << "a group";
    EXPECT_EQ("H 3", untold("// Both.\nint F();\nint G();\n\nint H();\n"));
    EXPECT_EQ("F H 3", untold("\nnamespace a {\nextern \"C\" {\nint F();\nint G(); // beside\n\n"
                              "inline bool H(A a = {}) { return a; }\n}\n}\n"));
    EXPECT_EQ("operator== 1", untold("bool operator==(const A &a, const A &b);\n"));
    EXPECT_EQ("F 1", untold("template <typename T> std::vector<T> F(T t)\n{\n    return {t};\n}\n"));
}

TEST(ContractRule, RefusesATreeThatSaysLittle)
{
    const std::string told = "// Why.\nint F(int a);\n\n";
    std::string nine;
    for (int i = 0; i < 9; ++i) {
        nine += told;
    }
    const std::string bare = "int G(int a);\n\n";
    EXPECT_EQ("", Said(Contracts, "src/frame/a.h", nine + bare));
    EXPECT_NE("", Said(Contracts, "src/frame/a.h", nine + bare + bare));
    EXPECT_EQ("", Said(Contracts, "tests/a.h", bare)) << "the product's headers count";
}

TEST(TextRule, RefusesTextsThatAreNotTurnedOver)
{
    EXPECT_NE("", Said(TextsAreTurnedOver, "src/frame/a.cpp", "F(\"Kürzel\");"));
    EXPECT_NE("", Said(TextsAreTurnedOver, "src/frame/a.cpp", "F(\"K\\xFCrzel\");"));
    EXPECT_NE("", Said(TextsAreTurnedOver, "src/frame/a.cpp", "F(\"K\\374rzel\");"));
    EXPECT_EQ("", Said(TextsAreTurnedOver, "src/frame/a.cpp", "F(\"Kürzel\"_w); // Kürzel"));
    EXPECT_EQ("", Said(TextsAreTurnedOver, "src/frame/a.cpp", "F(\"Kür\"\n  \"zel\"_w);"));
    EXPECT_EQ("", Said(TextsAreTurnedOver, "src/frame/a.cpp", "F(\"\\x1F\\\\xFC\");"));
    EXPECT_EQ("", Said(TextsAreTurnedOver, "tools/a.cpp", "F(\"Kürzel\");"));
}

TEST(WordRule, RefusesWhatSendsTheReaderElsewhere)
{
    const std::string comment = "// The ";
    EXPECT_NE("", Said(Words, "src/a.h", comment + "TO" + "DO: later"));
    EXPECT_NE("", Said(Words, "README.md", comment + "Par" + "t 3.1 says"));
    EXPECT_NE("", Said(Words, "src/a.h", comment + "Spe" + "cification wants it."));
    EXPECT_EQ("", Said(Words, "src/a.h", std::string("int sp") + "ec = 0;"));
    EXPECT_EQ("", Said(Words, "src/a.h", "// Part of a special method; the species specifies nothing."));
}

TEST(HeaderRule, BelievesTheBuildOfASourceThatIncludesItsHeaderFirst)
{
    const SourceFile header{"src/frame/a.h", ""};
    const std::vector<std::string> left = {"src/frame/a.h"};
    EXPECT_EQ(left, HeadersToCompile(
                        {header, {"src/frame/a.cpp", "#include <cstdint>\n#include \"src/frame/a.h\"\n"}}));
    EXPECT_EQ(left,
              HeadersToCompile({header, {"src/platform/windows/a.cpp", "#include \"src/frame/a.h\"\n"}}));
    EXPECT_TRUE(HeadersToCompile({header, {"src/frame/a.cpp", "#include \"src/frame/a.h\"\n"}}).empty());
}

TEST(HeaderRule, RefusesAHeaderThatNeedsAnother)
{
    namespace fs = std::filesystem;
    std::string folder = (fs::temp_directory_path() / "vark-canary-XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(folder.data()));
    std::ofstream(fs::path(folder) / "good.h")
        << "#pragma once\n#include <cstdint>\ninline std::uint8_t F() { return 1; }\n";
    std::ofstream(fs::path(folder) / "bad.h") << "#pragma once\ninline std::uint8_t G() { return 1; }\n";
    const Breaches breaches = HeadersCompileAlone(folder, {"good.h", "bad.h", "good.h"});
    fs::remove_all(folder);
    ASSERT_EQ(1u, breaches.size());
    EXPECT_EQ("bad.h", breaches[0].Path);
    EXPECT_NE(std::string::npos, breaches[0].Why.find("error")) << breaches[0].Why;
}

TEST(NeedsRule, RefusesALibraryBeyondTheRuntime)
{
    namespace fs = std::filesystem;
    std::string folder = (fs::temp_directory_path() / "vark-canary-XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(folder.data()));
    // A library that needs another one of our own making.
    const std::string compiler =
        "cd '" + folder + "' && " VARK_CXX " -shared -Wl,--no-as-needed -x c++ /dev/null ";
    OutputOf(compiler + "-Wl,-soname,libother.so.1 -o libother.so");
    OutputOf(compiler + "-x none -Wl,-soname,libone.so -o libone.so libother.so");
    const Breaches breaches = DynamicNeeds(folder + "/libone.so");
    const Breaches clean = DynamicNeeds(folder + "/libother.so");
    fs::remove_all(folder);
    ASSERT_EQ(1u, breaches.size());
    EXPECT_EQ("needs libother.so.1", breaches[0].Why);
    EXPECT_TRUE(clean.empty());
}

TEST(CircleRule, RefusesSourcesThatNeedEachOther)
{
    namespace fs = std::filesystem;
    std::string folder = (fs::temp_directory_path() / "vark-canary-XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(folder.data()));
    const auto Compile = [&](const std::string &name, const std::string &text) {
        std::ofstream(fs::path(folder) / (name + ".cpp")) << text;
        OutputOf("cd '" + folder + "' && " VARK_CXX " -c " + name + ".cpp -o " + name + ".cpp.o");
        return folder + "/" + name + ".cpp.o";
    };
    const std::string low = Compile("low", "int value; void Low() {}");
    const std::string high = Compile("high", "void Low(); void High() { Low(); }");
    const std::string calls = Compile("calls", "void High(); void Called() { High(); }");
    const std::string called = Compile("called", "void Called(); void Low() { Called(); }");
    const std::string takes = Compile("takes", "void High(); int given; void Take() { High(); }");
    const std::string gives = Compile("gives", "extern int given; void High() { given = 1; }");
    const Breaches none = Circles("t", {low, high, calls});
    const Breaches ofThree = Circles("t", {called, high, calls});
    const Breaches ofData = Circles("t", {takes, gives});
    const Breaches ofNothing = Circles("t", {});
    const Breaches unread = Circles("t", {folder + "/gone.o", folder + "/gone_too.o"});
    fs::remove_all(folder);
    EXPECT_TRUE(none.empty());
    ASSERT_EQ(1u, ofThree.size());
    EXPECT_EQ("called.cpp needs Called of calls.cpp; calls.cpp needs High of high.cpp; "
              "high.cpp needs Low of called.cpp; ",
              ofThree[0].Why);
    EXPECT_EQ(1u, ofData.size());
    EXPECT_EQ(1u, ofNothing.size());
    EXPECT_EQ(1u, unread.size());
}

TEST(NeedsRule, RefusesWhatIsNoSharedLibrary)
{
    EXPECT_FALSE(DynamicNeeds(VARK_SOURCE_DIR "/CMakeLists.txt").empty());
}
