#!/usr/bin/env python3
# ctest: slow timeout=900
"""The tests of `quit`, many times over."""
from engine_process import main
from quit_test import Quit


class QuitOften(Quit):
    ROUNDS = 150


del Quit

if __name__ == "__main__":
    main()
