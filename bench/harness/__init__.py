"""Runs the benchmarks: each server on a stand of its own, all of them in turn, round by round."""
