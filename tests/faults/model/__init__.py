"""A model of the service's behavior."""
