#include "protocol/dialect.h"

#include "protocol/protocol_state.h"
#include "protocol/uci.h"

#include <cstdio>

namespace quelmar {

Dialect dialect{
    .report_bad_fen = [](int error) { std::printf("Error in EPD line%d\n", error); },
    .uci_line_during_search = dispatch_uci_during_search,
};

const char* comment_head() {
    return dialect.starts_in_uci || protocol_state.uci_mode ? "info string" : "#";
}

}  // namespace quelmar
