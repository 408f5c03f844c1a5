// The two small files of the conformance tests, and calls on them in the words of the cases:
//   T  64 bytes; key 0 eight letters, unique and fixed; key 1 eight letters, duplicates, modifiable; key 2 a
//      number, duplicates, modifiable, descending
//   N  16 bytes; key 0 a number given by the record manager; key 1 two letters and a small number
// Records of T are written key0/key1/key2; most cases start from a/x/1, b/x/5, c/x/3.
#pragma once

#include "driver.h"

namespace wbtrvtest {

inline constexpr unsigned duplicatesModifiable = BtrKeyDuplicates | BtrKeyModifiable;

inline std::string DefinitionOfT()
{
    return CreateBuffer(64, 3,
                        {{1, 8, 0},
                         {9, 8, duplicatesModifiable},
                         {17, 4, duplicatesModifiable | BtrKeyDescending, BtrTypeInteger}});
}

inline std::string DefinitionOfN()
{
    return CreateBuffer(16, 2,
                        {{1, 4, 0, BtrTypeAutoincrement},
                         {5, 2, duplicatesModifiable | BtrKeySegmented},
                         {7, 2, duplicatesModifiable, BtrTypeUnsigned}});
}

inline std::string Padded(std::string text, size_t size)
{
    text.resize(size, '\0');
    return text;
}

inline std::string RecordOfT(const std::string &key0, const std::string &key1, int32_t key2)
{
    return Padded(Padded(key0, 8) + Padded(key1, 8) + Number(key2), 64);
}

inline std::string RecordOfN(int32_t number, const std::string &letters, uint16_t small)
{
    return Padded(Number(number) + Padded(letters, 2) +
                      std::string(reinterpret_cast<const char *>(&small), sizeof small),
                  16);
}

// Reads and changes of T by one client, in the words of the cases.
template <typename Client> struct OnT {
    Client &By;
    uint8_t Block = 0;

    Answer Insert(const std::string &key0, const std::string &key1, int32_t key2, int8_t keyNumber = 0,
                  uint16_t bias = 0, uint32_t length = 64) const
    {
        return By({.Operation = static_cast<uint16_t>(BtrOpInsert + bias),
                   .Block = Block,
                   .Data = RecordOfT(key0, key1, key2),
                   .Length = length,
                   .KeyNumber = keyNumber});
    }
    Answer Update(const std::string &key0, const std::string &key1, int32_t key2, int8_t keyNumber = 0) const
    {
        return By({.Operation = BtrOpUpdate,
                   .Block = Block,
                   .Data = RecordOfT(key0, key1, key2),
                   .Length = 64,
                   .KeyNumber = keyNumber});
    }
    Answer Delete(int8_t keyNumber = 0) const
    {
        return By({.Operation = BtrOpDelete, .Block = Block, .KeyNumber = keyNumber});
    }
    Answer Read(unsigned operation, int8_t keyNumber, const std::string &key = "") const
    {
        return By({.Operation = static_cast<uint16_t>(operation),
                   .Block = Block,
                   .Length = 64,
                   .Key = key,
                   .KeyNumber = keyNumber});
    }
    Answer GetEqual(const std::string &key0, unsigned bias = 0) const
    {
        return Read(BtrOpGetEqual + bias, 0, key0);
    }
    Answer Position() const { return By({.Operation = BtrOpGetPosition, .Block = Block, .Length = 4}); }
    Answer Direct(const std::string &position, int8_t keyNumber) const
    {
        return By({.Operation = BtrOpGetDirect,
                   .Block = Block,
                   .Data = position,
                   .Length = 64,
                   .KeyNumber = keyNumber});
    }
    Answer Unlock(int8_t keyNumber, const std::string &position = "") const
    {
        return By({.Operation = BtrOpUnlock,
                   .Block = Block,
                   .Data = position,
                   .Length = static_cast<uint32_t>(position.size()),
                   .KeyNumber = keyNumber});
    }
};

inline std::string UpToNul(const std::string &text) { return text.substr(0, text.find('\0')); }

// The first letters of the record, or the status of a call that gave none.
inline std::string Name(const Answer &answer)
{
    if (answer.Status != BtrStatusOk) return std::to_string(answer.Status);
    return UpToNul(answer.Data);
}

inline std::string KeyText(const Answer &answer) { return UpToNul(answer.Key); }

// T with a and b in a directory of its own, open.
struct OpenedT : testing::Test {
    TempDirectory Directory;
    std::string Path = Directory / "t.btr";
    Local Me;
    OnT<Local> T{Me};

    void SetUp() override
    {
        ASSERT_EQ(Create(Me, Path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("b", "x", 5).Status, BtrStatusOk);
    }
};

} // namespace wbtrvtest
