"""A model of the service's behaviour, and the means to compare a running service with it."""
