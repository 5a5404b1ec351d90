"""The host's own classes: Picture, MemoryBlock, FolderItem, Timer and the like, made of their records."""
