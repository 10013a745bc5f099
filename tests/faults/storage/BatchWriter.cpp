// Writes batches into a database file and prints for each batch when the call begins and when it is acknowledged:
// "begin" and "done", each on a separate line.
//
//   tkosqllite_batch_writer DATABASE PRAGMAS SEED BATCHES
#include <sql/DatabaseApi.h>

#include <cstdlib>
#include <iostream>

#include "faults/storage/WriteBatches.h"

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
    std::cout << std::unitbuf; // so that a kill loses nothing
    Morvik::sql::tests::WriteBatches batches(std::strtoull(argv[3], nullptr, 10));
    for (int left = std::atoi(argv[4]); left > 0; --left) {
        const Morvik::sql::tests::WriteBatch batch = batches.Next();
        std::cout << "begin\n";
        if (!batch.run(facade)) {
            std::cerr << facade.GetLastError() << ' ' << facade.GetLastErrorMsg() << '\n';
            return 1;
        }
        std::cout << "done\n";
    }
    return 0;
}
