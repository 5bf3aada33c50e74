"""Where sources can be mutated, and the run-time switches that do it."""
