#include "eval/evaluate.h"

#include "board/position.h"
#include "eval/attack_map.h"
#include "eval/ply_outputs.h"

namespace quelmar {

std::array<AttackMap, 2> attack_map;
std::array<PlyOutputs, 84> ply_outputs;

int evaluate() {
    const UndoRecord& here = position.current();
    return here.material_us - here.material_them + here.pst_us - here.pst_them;
}

}  // namespace quelmar
