"""What tests of programs of another architecture need."""
