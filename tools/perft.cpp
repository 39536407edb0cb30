// Counts the leaves of the legal move tree: perft "FEN" DEPTH. Both generators count, the pseudo-legal one
// with the search's test of legality, and have to agree.
#include "board/perft.h"

#include "board/generate.h"
#include "board/hash_keys.h"
#include "protocol/command_line.h"
#include "protocol/game.h"

#include <chrono>
#include <cstdio>

using namespace quelmar;

namespace {

constexpr int MAX_DEPTH = 60;
constexpr char USAGE[] = "usage: perft \"FEN\" DEPTH\n";

u64 timed_perft(const char* name, int depth, void (*generate)()) {
    const auto start = std::chrono::steady_clock::now();
    const u64 leaves = perft(depth, generate);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%-12s %llu leaves, %.3f s\n", name, static_cast<unsigned long long>(leaves),
                seconds.count());
    return leaves;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (const auto status = status_of_options({argv, static_cast<std::size_t>(argc)}, USAGE))
        return *status;
    const int depth = argc == 3 ? std::atoi(argv[2]) : 0;
    if (depth < 1 || depth > MAX_DEPTH) {
        std::fputs(USAGE, stderr);
        return 1;
    }
    init_hash_keys();
    if (!set_up_or_report(argv[1]))
        return 1;
    const u64 legal = timed_perft("legal", depth, generate_legal_moves);
    const u64 pseudo_legal = timed_perft("pseudo-legal", depth, generate_moves);
    return legal == pseudo_legal ? 0 : 1;
}
