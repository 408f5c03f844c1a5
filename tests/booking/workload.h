// One thread of the random workload: its calls, and what it expects of them.
#pragma once

#include "tests/booking/posting_model.h"
#include "tests/support/books.h"

#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace vark::test {

struct Accepted {
    Expected What;
    std::string Beleg;
};

struct Worker {
    int Thread;
    int Mandant;
    bool HasCosts;
    std::mt19937 Random;
    std::vector<Accepted> Postings = {};
    std::map<std::string, std::string> Names = {}; // Debitoren of this thread that exist now
    std::vector<std::string> Faults = {};
    int Bookings = 0;
    int Answers = 0; // queries that gave something

    template <typename Choice, size_t Count> const Choice &Pick(const Choice (&choices)[Count])
    {
        return choices[Random() % Count];
    }
    bool OneIn(unsigned n) { return Random() % n == 0; }
    std::string NextBeleg() { return std::to_string(Thread) + "-" + std::to_string(Bookings++); }
    // Debitoren that only this thread makes.
    std::string OwnKonto(int n) const { return std::to_string(300000 + Thread * 1000 + n); }
};

void Check(Worker &worker, const std::string &what, int32_t expected, int32_t code);
void Check(Worker &worker, const std::string &what, const std::string &expected, const char *value);

// Final postings, open items and sums for the queries, in the books of tests/booking/ledger.h. They stay as
// they are: what the workload books lies in a Stapel.
void AddFinalRecords(Books &books, int mandant);

// Makes one query, with good or faulty arguments. `between` is called between the reads of a cursor, and may
// call whatever it likes.
void Ask(Worker &worker, const std::function<void()> &between);

} // namespace vark::test
