"""What is measured, section by section."""
