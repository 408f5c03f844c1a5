#include "tests/support/engine_faults.h"

#include "src/frame/lifecycle.h"

namespace vark::test {

namespace {

RecordManagerEntry real;
thread_local bool armed;
thread_local int countdown;
thread_local int counted;
thread_local int onlyOperation; // -1: all
thread_local int16_t answer;

int16_t Faulty(uint16_t operation, void *positionBlock, void *data, uint32_t *dataLength, void *key,
               uint8_t keyLength, int8_t keyNumber)
{
    if (armed && (onlyOperation < 0 || onlyOperation == operation)) {
        ++counted;
        if (counted == countdown) {
            // A file that stays open with nobody knowing it would be this stand-in's fault.
            if (operation == 1) real(operation, positionBlock, data, dataLength, key, keyLength, keyNumber);
            return answer;
        }
    }
    return real(operation, positionBlock, data, dataLength, key, keyLength, keyNumber);
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

int StopEngineFaults()
{
    armed = false;
    return counted;
}

} // namespace vark::test
