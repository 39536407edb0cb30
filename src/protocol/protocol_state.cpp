#include "protocol/protocol_state.h"

#include "protocol/clocks.h"
#include "protocol/settings.h"

namespace quelmar {

TimeControl time_control;
EngineSettings settings;
ProtocolState protocol_state;

}  // namespace quelmar
