// Has nothing of its own: it is the target that precompiled.h belongs to.
