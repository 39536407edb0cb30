// What ends a run of the table maker: a message for the user.
#pragma once

#include <stdexcept>

namespace quelmar::tablemaker {

class TablemakerError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace quelmar::tablemaker
