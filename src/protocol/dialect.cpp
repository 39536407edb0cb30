#include "protocol/dialect.h"

#include "protocol/uci.h"

#include <cstdio>

namespace quelmar {

Dialect dialect{
    .report_bad_fen = [](int error) { std::printf("Error in EPD line%d\n", error); },
    .uci_line_during_search = dispatch_uci_during_search,
};

}  // namespace quelmar
