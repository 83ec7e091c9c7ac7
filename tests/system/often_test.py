#!/usr/bin/env python3
# ctest: proof timeout=2400
"""Tests that end, damage or play something at random, many times over; their short forms run with the others."""
from engine_process import main
from match_tool_test import MatchTool
from quit_test import Quit
from tables_test import Tables


class QuitOften(Quit):
    ROUNDS = 150


class MatchToolOften(MatchTool):
    CHECKS = 5
    ROUNDS = 5


class TablesOften(Tables):
    KILLS = 6
    DAMAGES = 12


del MatchTool, Quit, Tables

if __name__ == "__main__":
    main()
