// The user's settings, filled at start-up and changed by protocol options, and the file they are read from.
// Those of the search stand in SearchSettings, the playing style with the evaluation.
#pragma once

#include "board/types.h"

#include <string>
#include <string_view>

namespace quelmar {

inline constexpr std::size_t PIECE_LETTERS_MAX = 9, TB_PATH_MAX = 257;  // characters

// Flags are ints holding 0 or 1, so that the tables of keys and options can address every field alike.
struct EngineSettings {
    int hash_mb = 24;        // transposition table, megabytes
    int fritz_hash_mb = 24;  // stands in for a UCI hash size of 1 or less
    int resign_enabled = 0;
    int white_score = 0;  // thinking lines show White's point of view
    int san_output = 0;   // thinking lines show SAN
    int show_curr_line = 0;
    int show_refutations = 0;
    std::string piece_letters = "PNBRQK";  // pawn, knight, bishop, rook, queen, king; may be shorter or odd
    std::string tb_path;                   // directory list
    int tb_cache_mb = 1;
};

extern EngineSettings settings;

// All settings of the program as they were before anything was read.
void reset_settings();

// Replaces the transposition table by one of settings.hash_mb and tells when there is less memory.
void apply_hash_size();

// Registers the endgame tables along settings.tb_path, with a cache of settings.tb_cache_mb, which becomes
// what could be had.
void apply_table_path();

// In the order of Style. The first six letters tell them apart.
inline constexpr Table<std::string_view, 4> STYLE_NAMES = {"Normal", "Active", "Aggressive", "Suicidal"};
inline constexpr std::size_t STYLE_LETTERS = 6;

// Plays in one of the styles, by its number 0..3.
void choose_style(int number);

// The same by the first letters of `name`, upper or lower case; an unknown name changes nothing.
void choose_style_named(std::string_view name);

// The null move is searched so many plies shallower, with little material on the board at most 2; 0 switches
// it off.
void choose_null_reduction(int plies);

// Sets one setting from text; what is no number leaves it as it was.
void set_number(int& setting, std::string_view value);

// Reads "quelmar.ini" in the working directory into `settings` and returns whether there is one. Without it
// nothing changes; lines that are not understood are passed over; nothing is reported. Only the standard UCI
// wants a regular file, reads lines of any length and tells of a path of tables that is too long.
bool read_config_file();

// The same for "quelmar/quelmar.ini" in the folder of the user's settings: $XDG_CONFIG_HOME where it is an
// absolute path, otherwise ~/.config.
bool read_users_config_file();

// Takes one line of the file (its line end included or not) into `settings`. True when it begins with a key,
// whether or not its value could be read.
bool apply_config_line(std::string_view line);

}  // namespace quelmar
