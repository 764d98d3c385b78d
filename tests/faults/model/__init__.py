"""A model of the service's behaviour."""
