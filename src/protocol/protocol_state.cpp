#include "protocol/protocol_state.h"

#include <cstdio>

namespace quelmar {

ProtocolState protocol_state;

void tell(const std::string& text) {
    std::printf("%s %s\n", protocol_state.uci_mode ? "info string" : "#", text.c_str());
}

std::string excerpt(std::string_view said) {
    constexpr std::size_t LONGEST = 120;
    return std::string(said.substr(0, LONGEST));
}

}  // namespace quelmar
