#include "protocol/protocol_state.h"

#include "protocol/output.h"

namespace quelmar {

ProtocolState protocol_state;

void tell(const std::string& text) {
    std::string line = (protocol_state.uci_mode ? "info string " : "# ") + text;
    if (protocol_state.standard_uci)
        line.erase(line.find_last_not_of(' ') + 1);
    print("%s\n", line.c_str());
}

std::string excerpt(std::string_view said) {
    constexpr std::size_t LONGEST = 120;
    return std::string(said.substr(0, LONGEST));
}

}  // namespace quelmar
