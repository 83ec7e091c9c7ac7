#!/usr/bin/env python3
# ctest: timeout=200
"""Two games, one of them Chess960."""
from engine_process import main
from games_test import Games


class TwoGames(Games):
    def test_standard_game(self):
        self.play(1, "--max-plies", "120")

    def test_chess960_game(self):
        self.play(1, "--max-plies", "120", "--chess960", "--option2", "Threads=2")


del Games

if __name__ == "__main__":
    main()
