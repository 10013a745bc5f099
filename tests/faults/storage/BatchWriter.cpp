// Writes batches into a database file and prints for each batch when the call begins and when it is acknowledged:
// "begin" and "done", each on a separate line.
//
//   tkosqllite_batch_writer DATABASE PRAGMAS SEED BATCHES
#include <sql/DatabaseApi.h>

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

#include "faults/storage/WriteBatches.h"

namespace {

// Output is unbuffered, so that a kill loses nothing.
void Say(std::string_view line)
{
    if (write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        std::abort();
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        return 2;
    }
    Morvik::sql::DatabaseApi facade;
    if (!facade.OpenDatabase(argv[1], false) || !facade.Execute(argv[2])) {
        std::cerr << facade.GetLastErrorMsg() << '\n';
        return 1;
    }
    Morvik::sql::tests::WriteBatches batches(std::strtoull(argv[3], nullptr, 10));
    for (int left = std::atoi(argv[4]); left > 0; --left) {
        const Morvik::sql::tests::WriteBatch batch = batches.Next();
        Say("begin\n");
        if (!batch.run(facade)) {
            std::cerr << facade.GetLastError() << ' ' << facade.GetLastErrorMsg() << '\n';
            return 1;
        }
        Say("done\n");
    }
    return 0;
}
