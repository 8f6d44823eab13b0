@rem Runs the tests; README.txt tells more.
@"%~dp0tests\morvane_verify.exe" %*
@exit /b %errorlevel%
