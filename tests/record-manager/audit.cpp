#include "audit.h"

#include <algorithm>
#include <map>
#include <set>

namespace wbtrvtest {

namespace {

constexpr uint8_t auditBlock = 15;

struct AuditedKey {
    int8_t Number;
    std::vector<BtrKeyEntry> Segments;
    bool Duplicates;
    bool HasNull;
    bool ValuesAreBytes; // two values are the same when their bytes are
};

std::vector<AuditedKey> KeysOf(const Answer &stat)
{
    BtrFileHeader header;
    memcpy(&header, stat.Data.data(), sizeof header);
    const char *next = stat.Data.data() + sizeof header;
    std::vector<AuditedKey> keys;
    for (unsigned i = 0; i < header.KeyCount; ++i) {
        AuditedKey key{static_cast<int8_t>(i), {}, false, false, true};
        BtrKeyEntry entry;
        do {
            memcpy(&entry, next, sizeof entry);
            next += sizeof entry;
            if (key.Segments.empty() && (header.Flags & BtrFileKeyNumbers) != 0)
                key.Number = static_cast<int8_t>(entry.KeyNumber);
            key.Duplicates = (entry.Flags & BtrKeyDuplicates) != 0;
            key.HasNull = (entry.Flags & (BtrKeyNullAll | BtrKeyNullAny)) != 0;
            const bool extended = (entry.Flags & BtrKeyExtendedType) != 0;
            const bool folded =
                (entry.Flags & BtrKeyCaseless) != 0 ||
                (extended && (entry.Type == BtrTypeZString || entry.Type == BtrTypeLString ||
                              entry.Type == BtrTypeFloat || entry.Type == BtrTypeAutoincrement));
            key.ValuesAreBytes = key.ValuesAreBytes && !folded;
            key.Segments.push_back(entry);
        } while ((entry.Flags & BtrKeySegmented) != 0);
        keys.push_back(key);
    }
    return keys;
}

std::string ValueOf(const AuditedKey &key, const std::string &record)
{
    std::string value;
    for (const BtrKeyEntry &segment : key.Segments) {
        value += record.substr(segment.Position - 1u, segment.Length);
    }
    return value;
}

struct Auditor {
    const Caller &Client;
    uint32_t Room;                              // for a record
    std::map<std::string, std::string> Records; // by position
    FileImage Image;

    Answer Call(unsigned operation, int8_t key, const std::string &value = "",
                const std::string &data = "") const
    {
        return Client({.Operation = static_cast<uint16_t>(operation),
                       .Block = auditBlock,
                       .Data = data,
                       .Length = Room,
                       .Key = value,
                       .KeyNumber = key});
    }
    void Complain(const std::string &what)
    {
        if (Image.Complaint.empty()) Image.Complaint = what;
    }
    std::string Position() const
    {
        const Answer answer = Call(BtrOpGetPosition, 0);
        return answer.Status == BtrStatusOk ? answer.Data.substr(0, 4) : "";
    }

    void ReadSteps(uint32_t count)
    {
        Answer answer = Call(BtrOpStepFirst, 0);
        while (answer.Status == BtrStatusOk && Records.size() <= count) {
            const std::string record = answer.Data.substr(0, answer.Length);
            if (!Records.emplace(Position(), record).second) Complain("a record is stepped to twice");
            Image.Records.push_back(record);
            answer = Call(BtrOpStepNext, 0);
        }
        if (answer.Status != BtrStatusEndOfFile)
            Complain("stepping ends with " + std::to_string(answer.Status));
        if (Records.size() != count)
            Complain("Stat counts " + std::to_string(count) + " records, stepping " +
                     std::to_string(Records.size()));
    }

    void ReadKey(const AuditedKey &key)
    {
        const std::string name = "key " + std::to_string(key.Number);
        std::set<std::string> seen;
        std::set<std::string> values;
        std::string last;
        Answer answer = Call(BtrOpGetFirst, key.Number);
        while (answer.Status == BtrStatusOk && seen.size() <= Records.size()) {
            const std::string record = answer.Data.substr(0, answer.Length);
            const std::string position = Position();
            const auto stepped = Records.find(position);
            if (stepped == Records.end() || stepped->second != record)
                Complain(name + " reads a record that stepping does not");
            if (!seen.insert(position).second) Complain(name + " reads a record twice");
            const std::string value = ValueOf(key, record);
            if (answer.Key.substr(0, value.size()) != value) Complain(name + " returns another value");
            const bool first = seen.size() == 1 || value != last;
            if (key.ValuesAreBytes && first && !values.insert(value).second)
                Complain(name + " comes to a value twice");
            if (key.ValuesAreBytes && !first && !key.Duplicates) Complain(name + " holds a value twice");
            last = value;
            answer = Call(BtrOpGetNext, key.Number, answer.Key);
        }
        if (answer.Status != BtrStatusEndOfFile)
            Complain(name + " ends with " + std::to_string(answer.Status));
        if (seen.size() > Records.size() || (!key.HasNull && seen.size() != Records.size()))
            Complain(name + " reads " + std::to_string(seen.size()) + " of " +
                     std::to_string(Records.size()));
        uint32_t unique = key.Segments[0].UniqueValues;
        if (key.ValuesAreBytes && unique != values.size())
            Complain(name + " has " + std::to_string(values.size()) + " values, Stat tells " +
                     std::to_string(unique));
        FindEach(key, name, seen);
    }

    void FindEach(const AuditedKey &key, const std::string &name, const std::set<std::string> &seen)
    {
        for (const auto &[position, record] : Records) {
            const bool indexed = seen.count(position) != 0;
            const std::string value = ValueOf(key, record);
            const Answer direct = Call(BtrOpGetDirect, key.Number, "", position);
            const int16_t expected = indexed ? BtrStatusOk : BtrStatusNotInIndex;
            if (direct.Status != expected)
                Complain(name + ": Get Direct gives " + std::to_string(direct.Status));
            if (!indexed) continue;
            const Answer equal = Call(BtrOpGetEqual, key.Number, value);
            if (equal.Status != BtrStatusOk) Complain(name + " does not find what it holds");
        }
    }
};

} // namespace

FileImage Audit(const Caller &client, const std::string &path)
{
    Auditor auditor{client, 4096, {}, {}};
    auditor.Image.Opened = Open(client, path, auditBlock).Status;
    if (auditor.Image.Opened != BtrStatusOk) return auditor.Image;
    const Answer stat = auditor.Call(BtrOpStat, 0);
    if (stat.Status != BtrStatusOk) {
        auditor.Complain("Stat gives " + std::to_string(stat.Status));
    } else {
        BtrFileHeader header;
        memcpy(&header, stat.Data.data(), sizeof header);
        auditor.Room = (header.Flags & BtrFileVariable) != 0 ? 65535 : header.RecordLength;
        auditor.Room = std::max<uint32_t>(auditor.Room, 4);
        auditor.ReadSteps(header.RecordCount);
        for (const AuditedKey &key : KeysOf(stat)) {
            auditor.ReadKey(key);
        }
    }
    Close(client, auditBlock);
    return auditor.Image;
}

} // namespace wbtrvtest
