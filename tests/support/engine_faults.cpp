#include "tests/support/engine_faults.h"

#include "src/frame/lifecycle.h"

#include <thread>
#include <utility>

namespace vark::test {

namespace {

RecordManagerEntry real;
thread_local bool armed;
thread_local int countdown;
thread_local int counted;
thread_local int onlyOperation; // -1: all
thread_local int16_t answer;
thread_local int openFiles;
thread_local bool inTransaction;
thread_local uint16_t lastFailed;
// Behind a pointer: on Windows the destructor of a thread's own variable comes when its place has gone.
thread_local std::function<void()> *meanwhile;

void ForgetMeanwhile()
{
    delete meanwhile;
    meanwhile = nullptr;
}

enum Operation : uint16_t { Open = 0, Close = 1, Begin = 19, BeginConcurrent = 1019, End = 20, Abort = 21 };

// What the library holds after a call that went well.
void Note(uint16_t operation)
{
    switch (operation) {
    case Open: ++openFiles; break;
    case Close: --openFiles; break;
    case Begin:
    case BeginConcurrent: inTransaction = true; break;
    case End:
    case Abort: inTransaction = false; break;
    default: break;
    }
}

int16_t VARK_CALL Faulty(uint16_t operation, void *positionBlock, void *data, uint32_t *dataLength, void *key,
                         uint8_t keyLength, int8_t keyNumber)
{
    if (armed && (onlyOperation < 0 || onlyOperation == operation)) {
        ++counted;
        if (counted == countdown && meanwhile != nullptr) {
            std::thread(std::move(*meanwhile)).join();
            ForgetMeanwhile();
        } else if (counted == countdown) {
            lastFailed = operation;
            // A file that stays open with nobody knowing it would be this stand-in's fault.
            if (operation == Close) {
                real(operation, positionBlock, data, dataLength, key, keyLength, keyNumber);
                Note(operation);
            }
            return answer;
        }
    }
    const int16_t status = real(operation, positionBlock, data, dataLength, key, keyLength, keyNumber);
    if (status == 0) Note(operation);
    return status;
}

void Arm(int operation, int n, int16_t status)
{
    AttachLibrary();
    if (EngineEntry != Faulty) {
        real = EngineEntry;
        EngineEntry = Faulty;
    }
    onlyOperation = operation;
    countdown = n;
    answer = status;
    counted = 0;
    armed = true;
}

} // namespace

void FailEngineCall(int n, int16_t status) { Arm(-1, n, status); }

void FailEngineOperation(uint16_t operation, int n, int16_t status) { Arm(operation, n, status); }

void DoMeanwhile(uint16_t operation, int n, std::function<void()> action)
{
    Arm(operation, n, 0);
    ForgetMeanwhile();
    meanwhile = new std::function<void()>(std::move(action));
}

int StopEngineFaults()
{
    armed = false;
    ForgetMeanwhile();
    return counted;
}

int OpenEngineFiles() { return openFiles; }

bool IsInEngineTransaction() { return inTransaction; }

uint16_t LastFailedOperation() { return lastFailed; }

} // namespace vark::test
