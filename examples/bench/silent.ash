#!/bin/sh
# silent.ash - an adapter that ends without an answer to anything.
exit 0
