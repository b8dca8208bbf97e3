#!/usr/bin/env bash
echo "startup smoke: placeholder"
