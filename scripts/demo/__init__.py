"""The service at work, shown on a private phone: what is called, what it answers, and the events that it sends."""
