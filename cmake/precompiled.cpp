// Nothing: this file is there for the precompiled header that is made along with it.
