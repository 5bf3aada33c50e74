"""The sample: a made-up CAD product as it stands on a user's machine."""
