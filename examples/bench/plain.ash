#!/bin/sh
# plain.ash - an adapter whose file is not executable, as it happens after a careless copy.
printf 'never' >&"$pipeid"
