// What a view asks the server in a writer goes behind the writer's changes.
#include "record-manager/server/private.h"

namespace wbtrv {

void ForgetOwn(View *view)
{
    PQclear(view->Own);
    view->Own = nullptr;
    view->LastRecord = 0;
}

int16_t Settle(Writer *writer)
{
    if (writer->Failed != BtrStatusOk || !writer->Unfinished) return writer->Failed;
    writer->Unfinished = false;
    if (writer->Seen.By->Loading && writer->Appends)
        return AddToBatch(writer, writer->File, recordTree, 0, writer->Record,
                          {writer->Place, writer->PlaceSize});
    if (FlushBatches(writer) != BtrStatusOk) return writer->Failed;
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
