// Stands for a layer that has no sources yet.
