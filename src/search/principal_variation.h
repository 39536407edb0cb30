// Lines of play: read back from the transposition table, played and taken back.
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <span>
#include <vector>

namespace quelmar {

// Making moves and taking them back changes the order of the piece lists, and with it the order in which the
// search tries its moves. What is only to be looked at or printed is played under this guard.
class PieceOrderGuard {
public:
    PieceOrderGuard() : links(position.piece_links) {}
    ~PieceOrderGuard() { position.piece_links = links; }
    PieceOrderGuard(const PieceOrderGuard&) = delete;
    PieceOrderGuard& operator=(const PieceOrderGuard&) = delete;

private:
    Table<PieceLink, BOARD_SIZE> links;
};

// Follows the table's moves from the current position into `line`, as far as they are legal and at most to
// its end, and returns how many there are. A line ends after the move that repeats a position since the root.
// Overwrites the move lists from the current ply on.
int walk_table(std::span<Move> line);

// Reads the principal variation of the current position into search_state.pv.
void read_principal_variation();

// A legal move that the search may play and that does not take the king, empty when there is none.
Move first_playable_move();

// Plays a line from the current position and takes it back when it goes out of scope. The line may be longer
// than a search is deep: while a player lives every position of it counts as a root, so search_ply is 0. Only
// for lines that nobody searches from. Overwrites the first two move lists.
class LinePlayer {
public:
    LinePlayer();
    ~LinePlayer();
    LinePlayer(const LinePlayer&) = delete;
    LinePlayer& operator=(const LinePlayer&) = delete;

    void play(const Move& move);  // a legal move; there must be room
    void take_back();             // the last one
    void take_back_to(std::size_t length);
    const std::vector<Move>& moves() const { return moves_; }
    bool has_room() const;  // on the position stack and in a variation

    // Acts on the input that has arrived. Commands find the game's position behind the moves of the line.
    void poll_input() const;

private:
    PieceOrderGuard order_;
    int search_ply_then_ = position.search_ply;
    std::vector<Move> moves_;
};

// The legal moves of the current position, without captures of the king.
std::vector<Move> legal_moves();

bool is_checkmate();

// Whether a referee would call the current position drawn: hundredth ply, third occurrence, bare material. A
// checkmate on the hundredth ply is none.
bool is_drawn_by_rules();

// Whether the current position has stood on the board before, as far back as a repetition can reach.
bool is_repetition();

}  // namespace quelmar
