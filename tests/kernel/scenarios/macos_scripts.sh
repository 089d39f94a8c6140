#!/bin/bash
cd / # where any user may stand
/run/tree/tests/macos_scripts/macos_scripts.sh /run/tree/resources/macos
