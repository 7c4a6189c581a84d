#!/bin/sh
# Program pomiarowy do przykładu dozorca.kx: nie znajduje licznika i kończy się kodem 3.
echo "$*" >> pomiar.log
exit 3
