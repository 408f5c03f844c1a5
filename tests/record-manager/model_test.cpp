// The record manager against the model: a long seeded sequence of every operation, by several threads over
// several files, keys and position blocks, compared call by call. VARK_MODEL_SEED and VARK_MODEL_OPERATIONS
// change it: 100,000 operations take seconds, 100,000,000 hours.
#include "audit.h"
#include "layouts.h"
#include "model.h"
#include "threaded.h"

#include "record-manager/limits.h"

#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <thread>

namespace {

using namespace wbtrvtest;

// Draws what happens next.
struct Chooser {
    std::mt19937_64 Random;
    std::vector<std::string> Paths;
    std::map<std::string, ModelLayout> Layouts;

    unsigned Below(unsigned limit) { return static_cast<unsigned>(Random() % limit); }
    bool OneIn(unsigned many) { return Below(many) == 0; }

    // Few values, so that duplicates, conflicts and neighbours are common.
    std::string Field(const ModelSegment &segment)
    {
        std::string field(segment.Length, '\0');
        const unsigned pick = Below(12);
        switch (segment.Type) {
        case BtrTypeInteger: {
            const int64_t value = static_cast<int64_t>(pick) * 130 - 700;
            memcpy(field.data(), &value, segment.Length);
            break;
        }
        case BtrTypeUnsigned: {
            const uint64_t value = uint64_t{pick} * 100;
            memcpy(field.data(), &value, segment.Length);
            break;
        }
        case BtrTypeAutoincrement: {
            const int64_t value = OneIn(3) ? static_cast<int64_t>(Below(30)) - 5 : 0;
            memcpy(field.data(), &value, segment.Length);
            break;
        }
        case BtrTypeZString:
            field[0] = static_cast<char>('a' + pick % 4);
            if (pick % 3 == 0) field[1] = 'z';
            if (pick % 2 == 0) field[segment.Length - 1] = '#';
            break;
        default:
            for (size_t i = 0; i < segment.Length; ++i) {
                field[i] = segment.Null != 0 && pick < 4 ? segment.Null
                                                         : static_cast<char>(i == 0 ? 'a' + pick : 'k');
            }
            break;
        }
        return field;
    }

    std::string Record(const ModelLayout &layout)
    {
        std::string record(layout.Length, static_cast<char>('0' + Below(10)));
        for (const ModelKey &key : layout.Keys) {
            for (const ModelSegment &segment : key.Segments) {
                record.replace(segment.Offset, segment.Length, Field(segment));
            }
        }
        if (layout.Variable) record.append(Below(40), 'v');
        return record;
    }

    Request Next(const Model &model, size_t client)
    {
        Request request;
        request.Block = static_cast<uint8_t>(Below(4));
        request.Key = std::string(BtrKeyBufferSize, '~');
        const bool open = model.IsOpen(client, request.Block);
        if (!open && !OneIn(10)) {
            request.Operation = OneIn(12) ? BtrOpCreate : BtrOpOpen;
            request.Key = Paths[Below(static_cast<unsigned>(Paths.size()))];
            if (request.Operation == BtrOpOpen) {
                const int8_t modes[] = {0, 0, 0, 0, 0, 0, BtrModeReadOnly, BtrModeVerify, BtrModeExclusive,
                                        1};
                request.KeyNumber = modes[Below(10)];
            } else {
                request.Data = Layouts[request.Key].CreateBuffer;
                request.Length = static_cast<uint32_t>(request.Data.size());
                request.KeyNumber = OneIn(2) ? BtrKeepExisting : 0;
            }
            return request;
        }
        const std::string file = open ? model.FileOf(client, request.Block) : Paths[0];
        const ModelLayout &layout = Layouts[file];
        const auto keys = static_cast<unsigned>(layout.Keys.size());
        request.KeyNumber = static_cast<int8_t>(Below(keys));
        if (OneIn(40)) request.KeyNumber = static_cast<int8_t>(keys + Below(3));
        request.Data = std::string(layout.Length + 60, '#');
        request.Length = static_cast<uint32_t>(layout.Length + 60);
        if (OneIn(20)) request.Length = Below(static_cast<unsigned>(layout.Length) + 40);
        if (OneIn(50)) request.KeyLength = static_cast<uint8_t>(Below(20));

        constexpr unsigned biases[] = {
            0, 0, 0, 0, 0, 0, BtrBiasLock, BtrBiasMultiple, BtrBiasWaitLock, BtrBiasWaitMultiple};
        const unsigned bias = biases[Below(10)];
        const unsigned pick = Below(100);
        if (pick < 16) {
            request.Operation = static_cast<uint16_t>(BtrOpInsert + (OneIn(5) ? bias : 0));
            SetRecord(&request, layout);
        } else if (pick < 30) {
            request.Operation = BtrOpUpdate;
            SetRecord(&request, layout);
        } else if (pick < 38) {
            request.Operation = BtrOpDelete;
        } else if (pick < 68) {
            request.Operation =
                static_cast<uint16_t>(BtrOpGetEqual + Below(9) + bias + (OneIn(6) ? BtrBiasKeyOnly : 0));
            if (request.KeyNumber >= 0 && static_cast<unsigned>(request.KeyNumber) < keys) {
                std::string value;
                for (const ModelSegment &segment :
                     layout.Keys[static_cast<size_t>(request.KeyNumber)].Segments) {
                    value += Field(segment);
                }
                request.Key.replace(0, value.size(), value);
            }
        } else if (pick < 76) {
            const uint16_t steps[] = {BtrOpStepNext, BtrOpStepFirst, BtrOpStepLast, BtrOpStepPrevious};
            request.Operation = static_cast<uint16_t>(steps[Below(4)] + bias);
        } else if (pick < 80) {
            request.Operation = BtrOpGetPosition;
        } else if (pick < 84) {
            request.Operation = static_cast<uint16_t>(BtrOpGetDirect + bias);
            SetPosition(&request, model, file);
            if (OneIn(4)) request.KeyNumber = BtrNoLogicalPosition;
        } else if (pick < 87) {
            request.Operation = BtrOpUnlock;
            request.KeyNumber = static_cast<int8_t>(static_cast<int>(Below(3)) - 2);
            SetPosition(&request, model, file);
        } else if (pick < 90) {
            request.Operation = BtrOpStat;
            request.Length = 200;
            request.KeyNumber = 0;
        } else if (pick < 92) {
            request.Operation = BtrOpClose;
        } else if (OneIn(12)) {
            request.Operation = OneIn(2) ? BtrOpReset : BtrOpStop;
        } else if (!model.InTransaction(client)) {
            const uint16_t begins[] = {BtrOpBegin,
                                       BtrOpBegin + BtrBiasLock,
                                       BtrOpBeginConcurrent,
                                       BtrOpBeginConcurrent,
                                       BtrOpBeginConcurrent + BtrBiasLock,
                                       BtrOpBeginConcurrent + BtrBiasMultiple,
                                       BtrOpBeginConcurrent + BtrBiasNoRetry};
            request.Operation = OneIn(8) ? uint16_t{BtrOpEnd} : begins[Below(7)];
        } else {
            const uint16_t ends[] = {BtrOpEnd, BtrOpAbort, BtrOpBegin};
            request.Operation = ends[OneIn(10) ? 2 : Below(2)];
        }
        return request;
    }

private:
    void SetRecord(Request *request, const ModelLayout &layout)
    {
        request->Data = Record(layout);
        request->Length = static_cast<uint32_t>(request->Data.size());
        if (OneIn(30)) request->Length = static_cast<uint32_t>(layout.Length) - 1;
        if (OneIn(4)) request->KeyNumber = BtrNoCurrencyChange;
    }
    // One that some record has or had, or one that none can have.
    void SetPosition(Request *request, const Model &model, const std::string &file)
    {
        const std::vector<std::string> known = model.KnownPositions(file);
        std::string position(4, OneIn(2) ? '\0' : '\xFF');
        if (!known.empty() && !OneIn(10)) {
            const auto recent = static_cast<unsigned>(std::min<size_t>(known.size(), 20));
            position = known[known.size() - 1 - Below(recent)];
        }
        request->Data.replace(0, 4, position);
    }
};

std::string Show(const Answer &answer)
{
    return std::to_string(answer.Status) + " length " + std::to_string(answer.Length) + " data " +
           testing::PrintToString(answer.Data.substr(0, 24)) + " key " +
           testing::PrintToString(answer.Key.substr(0, 10));
}

std::string Show(size_t client, const Request &request, const std::string &file)
{
    return "client " + std::to_string(client) + " block " + std::to_string(request.Block) + " (" +
           file.substr(file.size() < 12 ? 0 : file.size() - 12) + ") operation " +
           std::to_string(request.Operation) + " key number " + std::to_string(request.KeyNumber) +
           " length " + std::to_string(request.Length) + " data " +
           testing::PrintToString(request.Data.substr(0, 24)) + " key " +
           testing::PrintToString(request.Operation == BtrOpOpen || request.Operation == BtrOpCreate
                                      ? request.Key
                                      : request.Key.substr(0, 10));
}

std::string Last(const std::vector<std::string> &history, size_t count)
{
    std::string text;
    for (size_t i = history.size() < count ? 0 : history.size() - count; i < history.size(); ++i) {
        text += history[i] + "\n";
    }
    return text;
}

uint64_t Option(const char *name, uint64_t otherwise)
{
    const char *value = getenv(name);
    return value != nullptr ? std::stoull(value) : otherwise;
}

// The files of one comparison, and the clients that work in them.
struct Comparison {
    std::vector<std::pair<std::string, ModelLayout>> Files;
    std::vector<Caller> Clients;
};

// Three files in one directory and one in another.
std::vector<std::pair<std::string, ModelLayout>>
FilesIn(const TempDirectory &directory, const TempDirectory &elsewhere, const std::string &prefix)
{
    return {{directory / (prefix + "t.btr").c_str(), LayoutT()},
            {directory / (prefix + "n.btr").c_str(), LayoutN()},
            {directory / (prefix + "v.btr").c_str(), LayoutV()},
            {elsewhere / (prefix + "t.btr").c_str(), LayoutT()}};
}

void Compare(uint64_t seed, uint64_t operations, const Comparison &with)
{
    constexpr size_t shown = 40;
    Chooser chooser{std::mt19937_64(seed), {}, {}};
    Model model(with.Clients.size());
    for (const auto &[path, layout] : with.Files) {
        chooser.Paths.push_back(path);
        chooser.Layouts[path] = layout;
        model.Add(path, layout);
    }
    // The directories are known before the first open, so that a missing file is just that.
    for (const auto &[path, layout] : with.Files) {
        const Request create{.Operation = BtrOpCreate,
                             .Data = layout.CreateBuffer,
                             .Length = static_cast<uint32_t>(layout.CreateBuffer.size()),
                             .Key = path};
        ASSERT_EQ(with.Clients[0](create).Status, model.Expect(0, create).Status);
    }

    std::vector<std::string> history;
    for (uint64_t i = 0; i < operations; ++i) {
        const size_t client = chooser.Below(static_cast<unsigned>(with.Clients.size()));
        const Request request = chooser.Next(model, client);
        const Answer got = with.Clients[client](request);
        Answer expected = model.Expect(client, request);
        if (request.Operation == BtrOpGetPosition && got.Status == BtrStatusOk &&
            expected.Status == BtrStatusOk) {
            const std::string position = got.Data.substr(0, 4);
            ASSERT_TRUE(model.LearnPosition(client, request.Block, position))
                << "seed " << seed << ", call " << i;
            expected.Data.replace(0, 4, position);
        }
        if (history.size() == 2 * shown) history.erase(history.begin(), history.begin() + shown);
        history.push_back(std::to_string(i) + ": " +
                          Show(client, request, model.FileOf(client, request.Block)) + " -> " + Show(got));
        const bool same = got.Status == expected.Status && got.Length == expected.Length &&
                          got.Data == expected.Data && got.Key == expected.Key;
        ASSERT_TRUE(same) << "seed " << seed << "\n"
                          << Last(history, shown) << "\nexpected " << Show(expected);
    }
}

// Memory is as good a disk as any here, and much faster.
struct ModelComparison : testing::Test {
    const std::filesystem::path Where = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
    TempDirectory Directory{Where};
    TempDirectory Elsewhere{Where};
    const uint64_t Seed = Option("VARK_MODEL_SEED", 20240611);
    const uint64_t Operations = Option("VARK_MODEL_OPERATIONS", 100000);

    const wbtrv::Limits Before = wbtrv::limits;

    void SetUp() override { std::cout << "seed " << Seed << ", " << Operations << " operations\n"; }
    void TearDown() override { wbtrv::limits = Before; }
};

// One calls after the other, so that what they see of one another is known.
TEST_F(ModelComparison, EveryCallOfThreeClientsInTurnAnswersAsTheModelDoes)
{
    wbtrv::limits.ChangeWait_ms = 0;
    wbtrv::limits.MomentaryWait_ms = 0;
    wbtrv::limits.LockWait_ms = 0;
    std::vector<std::unique_ptr<Threaded>> threads;
    Comparison with{FilesIn(Directory, Elsewhere, ""), {}};
    for (size_t i = 0; i < 3; ++i) {
        threads.push_back(std::make_unique<Threaded>());
        with.Clients.emplace_back(
            [&thread = *threads.back()](const Request &request) { return thread(request); });
    }
    Compare(Seed, Operations, with);
}

// Each has files of its own, in directories that all share; so what each call answers is known, whenever the
// others call and however long it has to wait for them.
TEST_F(ModelComparison, EveryCallOfFourClientsAtOnceAnswersAsTheModelDoes)
{
    wbtrv::limits.ChangeWait_ms = 60000;
    wbtrv::limits.MomentaryWait_ms = 60000;
    wbtrv::limits.LockWait_ms = 60000;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            PositionBlocks blocks{};
            const Comparison with{FilesIn(Directory, Elsewhere, std::to_string(i)),
                                  {[&](const Request &request) { return Carry(blocks, request); }}};
            Compare(Seed + i, Operations / 10, with);
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

} // namespace
