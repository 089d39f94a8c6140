#!/bin/bash
cd / # where any user may stand
/run/tree/tests/access/access_scripts.sh /run/tree/resources
