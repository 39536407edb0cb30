// Tables made for a test, in a directory of their own.
#pragma once

#include "support/temporary_directory.h"
#include "tablebase/catalogue.h"
#include "tablemaker/maker.h"
#include "tablemaker/verify.h"

namespace quelmar::testing {

class MadeTables {
public:
    explicit MadeTables(bool compress = false) : maker_(directory_.path(), {compress, THREADS, false}) {
        build_index_tables();
    }

    const std::filesystem::path& directory() const { return directory_.path(); }

    void make(std::string_view name) { maker_.make({ending_by_name(name)}); }

    // In moves, with the side of the first group to move.
    int longest_win(std::string_view name) const {
        tablemaker::TableStore store(directory_.path());
        return tablemaker::statistics_of(store.bytes(ending_by_name(name), WHITE)).longest_win;
    }

    // The first entry that does not follow from its successors, or nothing.
    std::string faults(std::string_view name) const {
        tablemaker::TableStore store(directory_.path());
        const auto result =
            tablemaker::verify_ending(store, ending_by_name(name), tablemaker::Workers(THREADS));
        if (result.positions == 0)
            return "no position was looked at";
        return result.faults == 0 ? "" : result.first_faults.at(0);
    }

private:
    static constexpr int THREADS = 2;

    TemporaryDirectory directory_;
    tablemaker::Maker maker_;
};

}  // namespace quelmar::testing
