// What a view asks the server in a writer goes behind the writer's changes.
#include "record-manager/server/private.h"

namespace wbtrv {

void ForgetOwn(View *view)
{
    PQclear(view->Own);
    view->Own = nullptr;
    view->LastRecord = 0;
}

int16_t ExchangeIn(Writer *writer, unsigned wait_ms)
{
    if (writer->Failed != BtrStatusOk) return writer->Failed;
    const int16_t status = Exchange(writer->Seen.By, wait_ms);
    if (writer->Failed == BtrStatusOk) writer->Failed = status;
    return status;
}

int16_t Settle(Writer *writer)
{
    if (writer->Failed != BtrStatusOk || !writer->Unfinished) return writer->Failed;
    writer->Unfinished = false;
    Parameters values{};
    AddNumber(&values, writer->File);
    AddNumber(&values, writer->Record);
    AddBytes(&values, writer->Place, writer->PlaceSize);
    const Statement statement = writer->Appends ? Statement::PutRecord : Statement::ReplaceRecord;
    const int16_t status = Send(writer->Seen.By, statement, values, Answer::Needed);
    if (writer->Failed == BtrStatusOk) writer->Failed = status;
    return status;
}

} // namespace wbtrv
