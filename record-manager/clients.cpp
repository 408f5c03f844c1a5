// The clients of this process: made by a thread's first call, ended with the thread, forgotten by a fork.
#include "record-manager/calls.h"
#include "record-manager/platform.h"
#include "record-manager/range_locks.h"

#include <cstdlib>
#include <pthread.h>

namespace wbtrv {

namespace {

thread_local Client *current = nullptr;
pthread_key_t endOfThread;
bool threadsAreWatched = false;
pthread_once_t once = PTHREAD_ONCE_INIT;
Client *clients = nullptr; // guarded by the registry's lock, which a fork waits for
unsigned forks = 0;        // that led to this process

void EndOfThread(void *client)
{
    if (IsProcessEnding()) return;
    current = static_cast<Client *>(client);
    EndClient();
}

// The child has the parent's position blocks and descriptions, and no right to either.
void ForgetParent()
{
    for (Client *client = clients; client != nullptr; client = client->Next) {
        for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
            if (store->LockFd >= 0) CloseDescription(store->LockFd);
        }
    }
    clients = nullptr;
    current = nullptr;
    ++forks;
    if (threadsAreWatched) pthread_setspecific(endOfThread, nullptr);
    ForgetStores();
}

void WatchThreads()
{
    threadsAreWatched = pthread_key_create(&endOfThread, EndOfThread) == 0;
    OnFork(BeforeFork, AfterForkInParent, ForgetParent);
}

} // namespace

Client *MakeClient()
{
    pthread_once(&once, WatchThreads);
    if (!threadsAreWatched) return nullptr;
    auto *client = static_cast<Client *>(std::calloc(1, sizeof(Client)));
    if (client == nullptr) return nullptr;
    client->Process = forks;
    LockRegistry();
    client->Next = clients;
    client->Link = &clients;
    if (clients != nullptr) clients->Link = &client->Next;
    clients = client;
    UnlockRegistry();
    return client;
}

Client *CurrentClient()
{
    if (current != nullptr) return current;
    Client *client = MakeClient();
    if (client == nullptr) return nullptr;
    if (pthread_setspecific(endOfThread, client) != 0) {
        FreeClient(client);
        return nullptr;
    }
    current = client;
    return client;
}

bool IsOfThisProcess(const Client &client) { return client.Process == forks; }

void ResetClient(Client *client)
{
    client->Group = GroupState::None; // so that the abort undoes all of it
    (void)EndHolding(client);
    if (client->Transaction != TransactionKind::None) AbortTransaction(client);
    for (size_t i = 0; i < client->HandleCount; ++i) {
        if (client->Handles[i] != nullptr) (void)CloseHandle(client->Handles[i]);
    }
}

void FreeClient(Client *client)
{
    ResetClient(client);
    while (client->Stores != nullptr) {
        EndClientStore(client->Stores);
    }
    LockRegistry();
    *client->Link = client->Next;
    if (client->Next != nullptr) client->Next->Link = client->Link;
    UnlockRegistry();
    std::free(client->Handles);
    std::free(client);
}

void EndClient()
{
    if (current == nullptr) return;
    FreeClient(current);
    pthread_setspecific(endOfThread, nullptr);
    current = nullptr;
}

} // namespace wbtrv
