#!/usr/bin/env python3
"""Two engines play game after game, and neither their memory nor their descriptors may grow.

    soak.py QUELMAR [--games N] [--rounds N] [--seed N]

Two processes play all games against each other under the xboard protocol, from a few random moves on, at no time per
move and every tenth game with a clock of a second. Each must find every move of the other legal, and both must claim
the same result. Then a process each for xboard and UCI begins new games, with a search, other hash sizes and a refused
position in between. The first quarter of a run may still take memory (the pages of a table come as they are touched);
from then on nothing may grow.
"""

import argparse
import collections
import os
import pathlib
import random
import re
import sys
import tempfile

from confined import Failure, Watched, is_sanitized

LONGEST_GAME = 400  # plies
SLACK = 2048  # kB, for the allocator's own ways


class Player(Watched):
    def __init__(self, program, *first):
        folder = tempfile.TemporaryDirectory(prefix="quelmar-soak-")
        (pathlib.Path(folder.name) / "quelmar.ini").write_text("hash 1\nfritz-hash 1\n")
        super().__init__(program, folder)
        self.questions = 0
        self.say(*first)

    def say(self, *lines):
        if not self.send("".join(line + "\n" for line in lines).encode()):
            raise Failure("the engine is gone")

    def ask(self, *lines):
        """Says the lines and returns what it has printed since the last forget(), their answers included."""
        self.questions += 1
        self.say(*lines, "ping %d" % self.questions, "isready")
        self.await_text(b"pong %d\n" % self.questions, b"readyok\n")
        return self.tail.decode(errors="replace")

    def ask_anew(self, *lines):
        self.forget()
        return self.ask(*lines)

    def decide(self, *lines):
        """Says the lines and returns the move it plays, if any, and the result it claims, if any."""
        self.forget()
        self.say(*lines)
        self.await_text(b"\nmove ", b"}\n")
        text = self.ask()
        if "Illegal move" in text:
            raise Failure(text)
        move = re.search(r"^move (\S+)$", text, re.MULTILINE)
        claim = re.search(r"^(1-0|0-1|1/2-1/2) \{.*\}$", text, re.MULTILINE)
        return move and move.group(1), claim and claim.group()

    def resources(self):
        status = pathlib.Path("/proc/%d/status" % self.process.pid).read_text()
        descriptors = os.listdir("/proc/%d/fd" % self.process.pid)
        return int(re.search(r"VmRSS:\s+(\d+)", status).group(1)), len(descriptors)


class Ledger:
    """Remembers what the processes needed after the first quarter, and holds it against them later."""

    def __init__(self, total, memory_counts):
        self.settled_at, self.settled, self.memory_counts = total // 4, {}, memory_counts

    def enter(self, number, **players):
        for name, player in players.items():
            memory, descriptors = player.resources()
            if number <= self.settled_at:
                self.settled[name] = memory, descriptors
            memory_then, descriptors_then = self.settled[name]
            if descriptors != descriptors_then or (self.memory_counts and memory > memory_then + SLACK):
                raise Failure("%s grew from %d to %d kB, from %d to %d descriptors" % (
                    name, memory_then, memory, descriptors_then, descriptors))


def random_moves(player, chance):
    moves = []
    for _ in range(chance.randrange(2, 9)):
        legal = re.search(r"Legal moves:\n((?:[a-hO][-\w]+\n)*)", player.ask_anew("usermove a1a1")).group(1).split()
        if not legal:
            break
        moves.append(chance.choice(legal))
        player.ask("usermove " + moves[-1])
    return moves


def play_game(players, chance, clock):
    """Returns the number of plies and what was claimed."""
    for player in players:
        player.ask_anew("new", "easy", "force", clock)
    moves = random_moves(players[0], chance)
    players[1].ask(*("usermove " + move for move in moves))
    on_move, other = players if len(moves) % 2 == 0 else players[::-1]
    said, claimed_before = ["go"], None
    for ply in range(len(moves), LONGEST_GAME):
        move, claim = on_move.decide(*said)
        if move is None or claimed_before:
            if claim != claimed_before:
                raise Failure("one claims %s, the other %s" % (claimed_before, claim))
            return ply, claim
        # In its first turn the other side still has to be told to play.
        said = ["usermove " + move] + (["go"] if ply == len(moves) else [])
        claimed_before = claim
        on_move, other = other, on_move
    return LONGEST_GAME, "undecided"


def soak_games(program, games, seed):
    players = [Player(program, "xboard"), Player(program, "xboard")]
    results, plies, game = collections.Counter(), 0, 0
    ledger = Ledger(games, not is_sanitized(program))
    try:
        for game in range(games):
            clock = "level 0 0:01 0" if game % 10 == 9 else "st 0"
            length, result = play_game(players, random.Random(seed + game), clock)
            plies += length
            results[result] += 1
            ledger.enter(game, first=players[0], second=players[1])
        for player in players:
            player.say("quit")
            player.end()
    except Failure as failure:
        sys.exit("soak: game %d: %s\n%s\n%s" % (game, failure, players[0].report(), players[1].report()))
    finally:
        for player in players:
            player.kill()
    print("soak: %d games, %d plies: %s" % (
        games, plies, ", ".join("%d %s" % (n, result) for result, n in results.most_common())))


XBOARD_ROUND = ("new", "setboard 8/8/8/8/8/8/8/8 w", "eval", "new", "easy", "st 0", "usermove e2e4", "undo", "remove")


def uci_round(number):
    return ("setoption name Hash value %d" % (2 + number % 3), "setoption name NalimovPath value /nowhere", "ucinewgame",
            "position fen 8/8/8/8/8/8/8/8 w", "go depth 2", "position startpos moves e2e4 e7e5", "go depth 3",
            "position startpos moves e2e5")


def soak_rounds(program, rounds):
    for name, first, one_round in (("xboard", "xboard", lambda _: XBOARD_ROUND), ("UCI", "uci", uci_round)):
        player = Player(program, first)
        ledger = Ledger(rounds, not is_sanitized(program))
        number = 0
        try:
            for number in range(rounds):
                player.ask_anew(*one_round(number))
                ledger.enter(number, engine=player)
            memory, descriptors = player.resources()
            print("soak: %d new games under %s: %d kB, %d descriptors" % (rounds, name, memory, descriptors))
        except Failure as failure:
            sys.exit("soak: round %d, %s: %s\n%s" % (number, name, failure, player.report()))
        finally:
            player.kill()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--games", type=int, default=12)
    parser.add_argument("--rounds", type=int, default=60)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    soak_rounds(options.program, options.rounds)
    soak_games(options.program, options.games, options.seed)


if __name__ == "__main__":
    main()
