#include "eval/threats.h"

#include "board/position.h"
#include "eval/attack_map.h"
#include "eval/exchange.h"

namespace quelmar {

namespace {

// The three men of `side` that would lose most, worst first; of equals the earlier one in the piece list.
void list_endangered(Side side, std::array<u8, 3>& squares, std::array<u8, 3>& values) {
    values = {};
    for (Square square = position.next_man(position.king_square(side)); square != LIST_END;
         square = position.next_man(square)) {
        const int loss =
            exchange_loss(position.at(square), attack_byte(WHITE, square), attack_byte(BLACK, square));
        if (loss <= values[2])
            continue;
        std::size_t place = 2;
        for (; place > 0 && loss > values[place - 1]; --place) {
            values[place] = values[place - 1];
            squares[place] = squares[place - 1];
        }
        values[place] = static_cast<u8>(loss);
        squares[place] = static_cast<u8>(square);
    }
}

}  // namespace

void find_threats() {
    UndoRecord& here = position.current();
    list_endangered(other_side(position.side_to_move), here.threat_square_them, here.threat_value_them);
    list_endangered(position.side_to_move, here.threat_square_us, here.threat_value_us);
}

}  // namespace quelmar
