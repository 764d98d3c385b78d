"""The service's contract as a model, and the means to hold a running service against it."""
