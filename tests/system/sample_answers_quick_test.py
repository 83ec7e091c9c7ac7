#!/usr/bin/env python3
"""A part of the sample answers."""
from engine_process import main
from sample_answers_test import SampleAnswers


class SampleAnswersQuick(SampleAnswers):
    QUICK = True


del SampleAnswers

if __name__ == "__main__":
    main()
